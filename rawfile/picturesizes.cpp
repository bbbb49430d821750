// Where the embedded pictures lie and how large they are, from the file's
// headers alone: what the reader answers without making a picture.

#include "rawfile/limits.h"
#include "rawfile/tm9file.h"

QSize TM9File::checkedPreviewSize() const
{
    const quint32 width = m_exif.imageWidth;
    const quint32 height = m_exif.imageLength;
    if (width == 0 || height == 0 || width > limits::kMaxPreviewSide ||
        height > limits::kMaxPreviewSide || quint64(width) * height > limits::kMaxPreviewPixels)
        return QSize();
    return QSize(int(width), int(height));
}

bool TM9File::hasFullSizeImage() const
{
    return m_exif.stripOffsets != 0 && m_exif.stripByteCounts != 0;
}

bool TM9File::hasThumbnailImage() const
{
    return m_exif.thumbnailOffset != 0 && m_exif.thumbnailLength != 0;
}

bool TM9File::hasPreviewImage() const
{
    return !previewSize().isEmpty();
}

QSize TM9File::previewSize() const
{
    return m_previewFound ? checkedPreviewSize() : QSize();
}

QSize TM9File::thumbnailSize() const
{
    return m_thumbnailSize;
}
