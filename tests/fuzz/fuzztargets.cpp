#include "tests/fuzz/fuzztargets.h"

#include "documents/treport.h"
#include "cli/queries.h"
#include "cli/sonymakernote.h"
#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"

#include <QByteArray>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

namespace fuzz {

namespace {

// A directory for the scratch files, with the offscreen application the
// pictures and the report need (a test brings its own).
const QTemporaryDir &scratch()
{
    static int argc = 1;
    static char name[] = "tolvik-fuzz";
    static char *argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QGuiApplication(argc, argv);
    }
    static const QTemporaryDir dir;
    return dir;
}

// The bytes as the scratch file, rewritten for every input; returns its path.
QString writeInput(const uint8_t *data, size_t size)
{
    const QString path = scratch().filePath(QStringLiteral("input.dng"));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    return path;
}

using Routine = void (TM9File::*)(const QByteArray &);

// The order is that of the seed corpus (routine-N.bin).
constexpr Routine kRoutines[] = {
    &TM9File::verarbeiteSony2010gTags, &TM9File::verarbeiteSony2010hTags,
    &TM9File::verarbeiteSony2010iTags, &TM9File::verarbeiteSony9050aTags,
    &TM9File::verarbeiteSony9050bTags, &TM9File::verarbeiteSony9400cTags,
    &TM9File::verarbeiteSony9401Tags,  &TM9File::verarbeiteSony9402Tags,
    &TM9File::verarbeiteSony9403Tags,  &TM9File::verarbeiteSony9404Tags,
    &TM9File::verarbeiteSony9405bTags, &TM9File::verarbeiteSony9406Tags,
    &TM9File::verarbeiteSony940cTags,  &TM9File::verarbeiteSonyShotInfoTags,
};

} // namespace

void reader(const uint8_t *data, size_t size)
{
    const QString path = writeInput(data, size);
    TM9File loaded(path);
    loaded.processFile();
    for (const TQuery &query : allQueries())
        query.value(loaded);
    for (const TQuery &field : storedValues())
        field.value(loaded);
    panelRows(panelTexts(loaded));
    loaded.previewImageScaled(64, 0);

    TM9File preflight(path);
    preflight.processFilePreflight();
    preflight.thumbnailImage(); // made on first use, from the header the pass read
}

void sonyMakerNote(const uint8_t *data, size_t size)
{
    if (size < 4)
        return;
    const quint32 offset =
        quint32(data[0]) | quint32(data[1]) << 8 | quint32(data[2]) << 16 | quint32(data[3]) << 24;
    TM9File file(writeInput(data + 4, size - 4));
    if (!file.processSonyMakerNoteAt(offset))
        return;
    for (const TQuery &query : sonyQueries())
        query.value(file);
    for (const TQuery &field : storedValues())
        field.value(file);
}

void sonyBlocks(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    const Routine routine = kRoutines[data[0] % std::size(kRoutines)];
    QByteArray block(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    TM9File::decipher(reinterpret_cast<unsigned char *>(block.data()), int(block.size()));

    // The model groups take any text; the block's start serves as one.
    const QString model = QString::fromLatin1(block.left(12));
    for (const auto group : {&TM9File::isInSony2010g_Group, &TM9File::isInSony2010h_Group,
                             &TM9File::isInSony2010i_Group, &TM9File::isInSony9050a_Group,
                             &TM9File::isInSony9050b_Group, &TM9File::isInSony2022_Group,
                             &TM9File::isInSony202A_Group})
        group(model);

    TM9File file;
    (file.*routine)(block);
    for (const TQuery &query : sonyQueries())
        query.value(file);
}

void report(const uint8_t *data, size_t size)
{
    TM9File file(writeInput(data, size));
    if (file.processFile() && file.hasPreviewImage())
        writeReportPdf(file, scratch().filePath(QStringLiteral("report.pdf")));
}

} // namespace fuzz
