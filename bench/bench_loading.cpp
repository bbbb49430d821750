// Opening an M9 file: processFile alone (what tolvik-info does), with the
// preview (what the window does), the preflight pass, and libexiv2's
// ImageFactory::open + readMetadata on the same file as a yardstick. The raw
// image data lies in a SubIFD that is never read, so the time must not grow
// with its size: each file is measured with the camera's 18 MB of raw data
// and with ten times as much.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#ifdef TOLVIK_HAVE_EXIV2
#include <exiv2/exiv2.hpp>
#endif

namespace {

QTemporaryDir *g_dir = nullptr;

QString sampleWithRaw(qint64 rawBytes)
{
    const QString path = g_dir->filePath(QStringLiteral("L%1.DNG").arg(rawBytes));
    if (!QFile::exists(path)) {
        fixture::SampleM9 options;
        options.rawDataBytes = rawBytes;
        fixture::writeFile(path, fixture::sampleM9Dng(options));
    }
    return path;
}

void BM_ProcessFile(benchmark::State &state)
{
    const QString path = sampleWithRaw(state.range(0));
    for (auto _ : state) {
        TM9File file(path);
        const bool accepted = file.processFile();
        benchmark::DoNotOptimize(accepted);
        if (!accepted)
            state.SkipWithError("the sample was not accepted");
    }
}

void BM_ProcessFileAndPreview(benchmark::State &state)
{
    const QString path = sampleWithRaw(state.range(0));
    for (auto _ : state) {
        TM9File file(path);
        const bool accepted = file.processFile();
        const QPixmap *preview = file.previewImage();
        benchmark::DoNotOptimize(preview);
        if (!accepted || !preview)
            state.SkipWithError("the sample was not accepted");
    }
}

void BM_Preflight(benchmark::State &state)
{
    const QString path = sampleWithRaw(state.range(0));
    for (auto _ : state) {
        TM9File file(path);
        benchmark::DoNotOptimize(file.processFilePreflight());
    }
}

#ifdef TOLVIK_HAVE_EXIV2
void BM_Exiv2ReadMetadata(benchmark::State &state)
{
    const std::string path = sampleWithRaw(state.range(0)).toStdString();
    for (auto _ : state) {
        auto image = Exiv2::ImageFactory::open(path);
        image->readMetadata();
        benchmark::DoNotOptimize(image->exifData().count());
    }
}
#endif

constexpr qint64 kM9RawBytes = 18 * 1000 * 1000;

} // namespace

BENCHMARK(BM_ProcessFile)->Arg(kM9RawBytes)->Arg(10 * kM9RawBytes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ProcessFileAndPreview)
    ->Arg(kM9RawBytes)
    ->Arg(10 * kM9RawBytes)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Preflight)->Arg(kM9RawBytes)->Arg(10 * kM9RawBytes)->Unit(benchmark::kMicrosecond);
#ifdef TOLVIK_HAVE_EXIV2
BENCHMARK(BM_Exiv2ReadMetadata)
    ->Arg(kM9RawBytes)
    ->Arg(10 * kM9RawBytes)
    ->Unit(benchmark::kMicrosecond);
#endif

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // the preview is a QPixmap
    QTemporaryDir dir;
    g_dir = &dir;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
