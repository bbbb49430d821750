// Opening an M9 file as the window does: construction, processFile and the
// preview. The raw image data lies in a SubIFD that is never read, so the
// time must not grow with its size: the same file is measured with the
// camera's 18 MB of raw data and with ten times as much.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

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

void BM_OpenM9File(benchmark::State &state)
{
    const QString path = sampleWithRaw(state.range(0));
    for (auto _ : state) {
        TM9File file(path);
        const bool accepted = file.processFile();
        const QPixmap *preview = file.previewImage();
        benchmark::DoNotOptimize(accepted);
        benchmark::DoNotOptimize(preview);
        if (!accepted || !preview)
            state.SkipWithError("the sample was not accepted");
    }
    state.counters["file_MB"] = double(QFile(path).size()) / 1e6;
}

void BM_Preflight(benchmark::State &state)
{
    const QString path = sampleWithRaw(state.range(0));
    for (auto _ : state) {
        TM9File file(path);
        benchmark::DoNotOptimize(file.processFilePreflight());
    }
}

constexpr qint64 kM9RawBytes = 18 * 1000 * 1000;

} // namespace

BENCHMARK(BM_OpenM9File)->Arg(kM9RawBytes)->Arg(10 * kM9RawBytes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Preflight)->Arg(kM9RawBytes)->Arg(10 * kM9RawBytes)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    g_dir = &dir;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
