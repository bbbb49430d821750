// Measures the frame view on a folder of frames: time to the half-size and
// the full-size picture of a cold frame, time to show a frame developed
// ahead after Page Down, and the longest the event loop went without a tick
// meanwhile. Used by scripts/bench; prints Markdown rows.
//   tolvik-framebench FOLDER   (three frames or more)

#include "card/dngfiles.h"
#include "tframeview.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: tolvik-framebench FOLDER\n");
        return 2;
    }
    const QStringList files = dngFilesIn(QString::fromLocal8Bit(argv[1]));
    if (files.size() < 3) {
        std::fprintf(stderr, "tolvik-framebench: give a folder of three frames or more\n");
        return 2;
    }
    TFrameView view([&](const QString &path, int direction) {
        const qsizetype at = files.indexOf(path) + direction;
        return at >= 0 && at < files.size() ? files[at] : QString();
    });
    view.resize(1200, 800);
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        return 1;

    // A 1 ms tick: the longest wall time between two is how long the window
    // did not answer.
    QElapsedTimer clock;
    double longestGap = 0, lastTick = 0;
    QTimer tick;
    tick.setInterval(1);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const double now = clock.nsecsElapsed() / 1e6;
        longestGap = std::max(longestGap, now - lastTick);
        lastTick = now;
    });
    const auto waitFor = [&](const std::function<bool()> &ready) {
        const double start = clock.nsecsElapsed() / 1e6;
        while (!ready())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        return clock.nsecsElapsed() / 1e6 - start;
    };
    clock.start();
    tick.start();

    view.showFrame(files[0]);
    const double half = waitFor([&] { return !view.frameSize().isEmpty(); });
    const double full = half + waitFor([&] { return view.showsFullSize(); });
    // The next frame is developed ahead once the shown one is in.
    QTest::qWait(3000);
    const double gapWhileAhead = longestGap;
    QTest::mouseMove(&view, QPoint(600, 400));
    QTest::keyClick(&view, Qt::Key_Z);
    QElapsedTimer stepped;
    stepped.start();
    QTest::keyClick(&view, Qt::Key_PageDown);
    view.repaint();
    const double ahead = view.showsFullSize() ? stepped.nsecsElapsed() / 1e6 : -1;
    std::printf("| cold frame: half size shown | %.0f ms |\n", half);
    std::printf("| cold frame: full size shown | %.0f ms |\n", full);
    std::printf("| Page Down to a frame developed ahead, shown at 100 %% | %.1f ms |\n", ahead);
    std::printf("| longest the window went without answering | %.1f ms |\n",
                std::max(gapWhileAhead, longestGap));
    return 0;
}
