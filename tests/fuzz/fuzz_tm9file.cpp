// libFuzzer target: any bytes, as a file, through both loading passes, the
// Sony maker-note walker and every decoder. Build with scripts/fuzz.

#include "cli/queries.h"
#include "cli/sonymakernote.h"
#include "rawfile/tm9file.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

QString scratchFile()
{
    static int argc = 1;
    static char name[] = "fuzz_tm9file";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    Q_UNUSED(app)
    static QTemporaryDir dir;
    return dir.filePath(QStringLiteral("input.dng"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = scratchFile();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();

    TM9File loaded(path);
    loaded.processFile();
    for (const TQuery &query : allQueries())
        query.value(loaded);
    for (const TQuery &field : storedValues())
        field.value(loaded);
    loaded.previewImageScaled(64, 0);

    // The Sony walker at the usual place of IFD0, so that mutations reach it.
    TM9File sony(path);
    sony.processSonyMakerNoteAt(8);
    for (const TQuery &query : sonyQueries())
        query.value(sony);

    TM9File preflight(path);
    preflight.processFilePreflight();
    preflight.thumbnailImage();
    return 0;
}
