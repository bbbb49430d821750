#include "documents/framefile.h"

#include "raw/frameimage.h"
#include "raw/tiffwriter.h"

#include <QFileInfo>
#include <QImageWriter>

namespace {

// JPEG quality of a written frame: high enough that judging focus on the file
// shows the frame, not the compression.
constexpr int kJpegQuality = 95;

struct TFrameSuffix {
    const char *suffix;
    TOutputKind kind;
};
constexpr TFrameSuffix kFrameSuffixes[] = {
    {"jpg", TOutputKind::Jpeg}, {"jpeg", TOutputKind::Jpeg}, {"png", TOutputKind::Png},
    {"tif", TOutputKind::Tiff}, {"tiff", TOutputKind::Tiff},
};

} // namespace

bool frameKindOf(const QString &path, TOutputKind *kind)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    for (const TFrameSuffix &entry : kFrameSuffixes) {
        if (suffix == QLatin1String(entry.suffix)) {
            *kind = entry.kind;
            return true;
        }
    }
    return false;
}

int frameBits(TOutputKind kind)
{
    return kind == TOutputKind::Tiff ? 16 : 8;
}

QString writeFrame(const raw::TPicture &picture, const QString &path, TOutputKind kind)
{
    if (kind == TOutputKind::Tiff) {
        QString reason;
        return raw::writeTiff(picture, path, &reason) ? QString() : writeFailure(path, reason);
    }
    const QImage image = raw::frameImage(picture);
    return writeAtomically(path, [&](QIODevice &device) {
        QImageWriter writer(&device, kind == TOutputKind::Jpeg ? "jpg" : "png");
        if (kind == TOutputKind::Jpeg)
            writer.setQuality(kJpegQuality);
        return !image.isNull() && writer.write(image);
    });
}
