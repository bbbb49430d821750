#include "rawfile/tm9file.h"

#include "rawfile/limits.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>

TM9File::TM9File() = default;

TM9File::TM9File(QString path) : m_path(std::move(path)), m_file(std::make_unique<QFile>(m_path))
{
    openFile();
}

TM9File::TM9File(QString path, QByteArray bytes)
    : m_path(std::move(path)), m_bytes(std::move(bytes)), m_fileSize(m_bytes.size()),
      m_fileFound(true)
{
}

TM9File::~TM9File()
{
    closeData();
}

QString TM9File::fileName() const
{
    return QFileInfo(m_path).fileName();
}

bool TM9File::isValidModel() const
{
    return m_exif.model == QLatin1String("M9 Digital Camera") ||
           m_exif.model == QLatin1String("M Monochrom");
}

quint32 TM9File::panasonicSubDirPosition(int index) const
{
    return index >= 0 && index < int(m_panasonicSubDir.size()) ? m_panasonicSubDir[index] : 0;
}

void TM9File::openFile()
{
    // Only regular files are opened: a pipe or device would block or never end.
    if (!m_file || m_file->isOpen())
        return;
    const QFileInfo info(m_path);
    m_fileSize = info.size();
    m_modified = info.lastModified();
    if (info.isFile())
        m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered); // the reader reads whole blocks
    m_fileFound = m_file->isOpen();
    if (m_fileFound)
        m_openError.clear();
    else if (!info.exists() && !info.isSymLink())
        m_openError = QString::fromLocal8Bit(std::strerror(ENOENT));
    else if (!info.isFile())
        m_openError = info.exists()
                          ? QStringLiteral("not a regular file")
                          : QString::fromLocal8Bit(std::strerror(ENOENT)); // a dangling link
    else
        m_openError = m_file->errorString();
}

bool TM9File::isFileUnchanged() const
{
    if (!m_file)
        return true; // in memory
    const QFileInfo info(m_path);
    return info.isFile() && info.size() == m_fileSize && info.lastModified() == m_modified;
}

void TM9File::openData()
{
    m_reader.clear();
    openFile();
    if (m_file && m_file->isOpen())
        m_reader.setFile(m_file.get(), m_fileSize); // read in blocks as the walk reaches them
    else if (!m_file)
        m_reader.setData(reinterpret_cast<const uchar *>(m_bytes.constData()), m_bytes.size());
    m_reader.setBudget(limits::kReadBudget);
    m_directoriesWalked = 0;
    m_reader.setBigEndian(true);
}

void TM9File::closeData()
{
    m_reader.clear(); // drops a mapping made for a picture
    if (m_file && m_file->isOpen())
        m_file->close();
}

void TM9File::recogniseContainer()
{
    m_fileTyp = 0;
    m_reader.seek(0);

    // A byte-order mark, confirmed by the magic number 42 behind it.
    const auto tiffHeader = [this](quint16 mark, int kind) {
        if (mark == 0x4D4D || mark == 0x4949) {
            m_bigEndian = mark == 0x4D4D;
            m_reader.setBigEndian(m_bigEndian);
            m_tiffBase = m_reader.pos() - 2;
            if (m_reader.readU16() == 42) {
                m_fileTyp = kind;
                m_headerValid = true;
            }
        }
    };

    const quint16 mark = m_reader.readU16();
    if (mark == 0xFFD8) {
        // JPEG: the Exif APP1 segment first or behind one APP0 segment.
        m_bigEndian = true;
        quint16 marker = m_reader.readU16();
        if (marker == 0xFFE0) {
            const quint16 length = m_reader.readU16();
            m_reader.seek(m_reader.pos() + length - 2);
            marker = m_reader.readU16();
        }
        if (marker != 0xFFE1)
            return;
        m_reader.skip(8); // APP1 length and "Exif\0\0", not checked
        tiffHeader(m_reader.readU16(), 2);
    } else {
        tiffHeader(mark, 1);
    }
}

bool TM9File::processFile()
{
    openData();
    recogniseContainer();

    if (m_fileTyp == 1) {
        walkChain(&TM9File::processIFD);
    }

    walkPanasonicSubDirs();
    const auto end = [](quint32 offset, quint32 length) { return qint64(offset) + length; };
    m_dataEnd =
        std::max({m_dataEnd, m_reader.farthest(), end(m_exif.stripOffsets, m_exif.stripByteCounts),
                  end(m_exif.thumbnailOffset, m_exif.thumbnailLength)});

    if (!isValidModel()) {
        closeData();
        return false;
    }
    m_previewFound = m_fileTyp == 1; // made when first asked for
    closeData();
    return true;
}

void TM9File::walkPanasonicSubDirs()
{
    for (const quint32 position : m_panasonicSubDir) {
        if (position != 0) {
            m_reader.seek(position);
            processPanasonicSubDirIFD();
        }
    }
}

void TM9File::walkChain(void (TM9File::*walker)())
{
    m_firstIfdOffset = m_reader.readU32();
    qint64 position = qint64(m_firstIfdOffset) + m_tiffBase;
    m_reader.seek(position);
    QSet<qint64> visited;
    for (;;) {
        visited.insert(position);
        m_ifdsInProgress.insert(position);
        (this->*walker)();
        m_ifdsInProgress.remove(position);
        position = qint64(m_nextIfdOffset) + m_tiffBase;
        m_reader.seek(position);
        ++m_ifdCounter;
        if (m_nextIfdOffset == 0 || visited.contains(position) ||
            ++m_directoriesWalked >= limits::kMaxDirectories)
            break;
    }
}

void TM9File::walkNestedIfd(qint64 position, void (TM9File::*walker)())
{
    if (m_ifdDepth >= limits::kMaxIfdDepth || m_ifdsInProgress.contains(position) ||
        ++m_directoriesWalked > limits::kMaxDirectories)
        return;
    const qint64 back = m_reader.pos();
    m_ifdsInProgress.insert(position);
    ++m_ifdDepth;
    m_reader.seek(position);
    (this->*walker)();
    --m_ifdDepth;
    m_ifdsInProgress.remove(position);
    m_reader.seek(back);
}
