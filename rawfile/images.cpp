// The pictures embedded in a raw file: the RGB preview of IFD0 and JPEGs.

#include "rawfile/limits.h"
#include "rawfile/tm9file.h"

#include <QFile>
#include <QImage>
#include <QPixmap>

// The pictures made so far, owned by the file object.
struct TM9File::TPictures {
    std::unique_ptr<QPixmap> preview;
    std::unique_ptr<QPixmap> previewScaled;
    std::unique_ptr<QPixmap> thumbnail;

    static TPictures &of(TM9File &file)
    {
        if (!file.m_pictures)
            file.m_pictures = {new TPictures, [](TPictures *pictures) { delete pictures; }};
        return *file.m_pictures;
    }
};

template <typename Read> auto TM9File::withData(Read read)
{
    const bool reopen = !m_reader.hasData();
    if (reopen)
        openData();
    auto result = read();
    if (reopen)
        closeData();
    return result;
}

QImage TM9File::previewPicture()
{
    return hasPreviewImage() ? previewRgb(m_exif.stripOffsets, m_exif.stripByteCounts) : QImage();
}

QImage TM9File::previewRgb(unsigned int position, unsigned int length)
{
    const QSize size = checkedPreviewSize();
    if (size.isEmpty() || !isFileUnchanged())
        return QImage();
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return QImage();

    // Packed 8-bit RGB, rows top to bottom; a strip shorter than the picture
    // leaves the rest black.
    withData([&] {
        const QByteArrayView strip = m_reader.view(position, length);
        const auto *src = reinterpret_cast<const uchar *>(strip.data());
        const qint64 available = strip.size();
        qint64 index = 0;
        for (int y = 0; y < size.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
            for (int x = 0; x < size.width(); ++x, index += 3) {
                line[x] = index + 2 < available ? qRgb(src[index], src[index + 1], src[index + 2])
                                                : qRgb(0, 0, 0);
            }
        }
        return true;
    });
    return image;
}

QPixmap *TM9File::extractPreviewPic(unsigned int position, unsigned int length)
{
    QImage image = previewRgb(position, length);
    return image.isNull() ? nullptr : new QPixmap(QPixmap::fromImage(std::move(image)));
}

QPixmap *TM9File::extractJPEGImage(unsigned int position, unsigned int length)
{
    if (!isFileUnchanged())
        return nullptr;
    auto picture = std::make_unique<QPixmap>();
    const bool loaded = withData([&] {
        const QByteArrayView bytes = m_reader.view(position, length);
        return picture->loadFromData(reinterpret_cast<const uchar *>(bytes.data()),
                                     uint(bytes.size()), "JPG");
    });
    return loaded ? picture.release() : nullptr;
}

void TM9File::extractFullSizeImage(QPixmap *target)
{
    Q_UNUSED(target) // the decoded picture is not handed out
    std::unique_ptr<QPixmap> picture;
    if (hasFullSizeImage() && m_fileTyp == 1)
        picture.reset(extractJPEGImage(m_exif.stripOffsets, m_exif.stripByteCounts));
    else if (m_fileTyp == 2)
        picture.reset(extractJPEGImage(0, quint32(qMin<qint64>(m_fileSize, UINT_MAX))));
}

QPixmap *TM9File::previewImage()
{
    // IFD0's strip: the last strip read in the chain, which in a Leica DNG is IFD0's.
    if (!hasPreviewImage())
        return nullptr;
    std::unique_ptr<QPixmap> &preview = TPictures::of(*this).preview;
    if (!preview)
        preview.reset(extractPreviewPic(m_exif.stripOffsets, m_exif.stripByteCounts));
    return preview.get();
}

QPixmap *TM9File::thumbnailImage()
{
    if (!m_thumbnailSize.isValid())
        return nullptr;
    std::unique_ptr<QPixmap> &thumbnail = TPictures::of(*this).thumbnail;
    if (!thumbnail)
        thumbnail.reset(extractJPEGImage(m_exif.thumbnailOffset, m_exif.thumbnailLength));
    return thumbnail.get();
}

QPixmap *TM9File::previewImageScaled(int width, int height)
{
    Q_UNUSED(height) // the aspect ratio of the preview decides
    const QPixmap *preview = previewImage();
    if (!preview || width <= 0)
        return nullptr;
    const quint64 scaledHeight =
        quint64(width) * quint64(preview->height()) / quint64(qMax(1, preview->width()));
    if (quint64(width) * scaledHeight > limits::kMaxPreviewPixels)
        return nullptr;
    std::unique_ptr<QPixmap> &scaled = TPictures::of(*this).previewScaled;
    scaled = std::make_unique<QPixmap>(preview->scaledToWidth(width, Qt::FastTransformation));
    return scaled.get();
}
