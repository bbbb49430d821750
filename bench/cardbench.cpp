// Measures the card window on a folder: time to the first rows shown, to every
// row, to the pictures of the shown rows and of every row; the longest the
// event loop went without a tick while loading; sorting by each column and
// filtering; peak memory after a first and a second open. Used by
// scripts/bench; prints Markdown rows.
//   tolvik-cardbench FOLDER [OPENS]   (3 opens unless told)

#include "cardmodel.h"
#include "cardwindow.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

namespace {

// VmHWM and VmRSS of this process, in MB.
std::pair<double, double> memoryMB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromLatin1(status.readAll());
    const auto kb = [&](const char *key) {
        const QRegularExpression line(QLatin1String(key) + QStringLiteral(":\\s+(\\d+)"));
        return line.match(text).captured(1).toDouble() / 1024.0;
    };
    return {kb("VmHWM"), kb("VmRSS")};
}

// CPU time of the calling thread: what it worked, not what it waited for a core.
double threadCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

struct TOpenTimes {
    double firstRows = -1, allRows = -1, shownPictures = -1, allPictures = -1, allFigures = -1;
    double longestGap = 0;    // wall time between two ticks
    double longestCpuGap = 0; // the window thread's own work between two ticks
};

class TBench {
public:
    explicit TBench(TCardWindow &window) : m_window(window)
    {
        m_view = window.findChild<QTableView *>();
        m_filter = static_cast<QSortFilterProxyModel *>(m_view->model());
        m_model = static_cast<TCardModel *>(m_filter->sourceModel());
        m_progress = window.findChild<QProgressBar *>();
    }

    // Opens folder and waits, ticking every millisecond, until cond holds.
    TOpenTimes open(const QString &folder)
    {
        TOpenTimes times;
        QElapsedTimer clock;
        double lastTick = 0;
        double lastCpu = threadCpuMs();
        QTimer ticker;
        ticker.setTimerType(Qt::PreciseTimer);
        QObject::connect(&ticker, &QTimer::timeout, [&] {
            const double now = clock.nsecsElapsed() / 1e6;
            const double cpu = threadCpuMs();
            times.longestGap = std::max(times.longestGap, now - lastTick);
            times.longestCpuGap = std::max(times.longestCpuGap, cpu - lastCpu);
            lastTick = now;
            lastCpu = cpu;
        });
        // Painted rows: the first paint of the viewport with rows in the model.
        struct TPaintWatch : QObject {
            std::function<void()> onPaint;
            bool eventFilter(QObject *, QEvent *event) override
            {
                if (event->type() == QEvent::Paint)
                    onPaint();
                return false;
            }
        } paintWatch;
        paintWatch.onPaint = [&] {
            if (times.firstRows < 0 && m_filter->rowCount() > 0)
                times.firstRows = clock.nsecsElapsed() / 1e6;
        };
        m_view->viewport()->installEventFilter(&paintWatch);

        clock.start();
        ticker.start(1);
        m_window.openFolder(folder);
        const auto ms = [&] { return clock.nsecsElapsed() / 1e6; };
        const bool loaded = QTest::qWaitFor(
            [&] {
                if (times.allRows < 0 && m_progress->isHidden())
                    times.allRows = ms();
                if (times.allRows >= 0 && times.shownPictures < 0 && shownPicturesMade())
                    times.shownPictures = ms();
                return times.shownPictures >= 0;
            },
            60000);
        // Every row's picture: the table scrolled through a page at a time,
        // each page waited for.
        const QScrollBar *scroll = m_view->verticalScrollBar();
        bool pictured = true;
        for (int value = 0; pictured; value += scroll->pageStep()) {
            m_view->verticalScrollBar()->setValue(value);
            pictured = QTest::qWaitFor([&] { return shownPicturesMade(); }, 60000);
            if (value >= scroll->maximum())
                break;
        }
        pictured =
            pictured && QTest::qWaitFor(
                            [&] {
                                for (int row = 0; row < m_model->rowCount(); ++row) {
                                    if (m_model->entry(row).accepted() && !m_model->hasPicture(row))
                                        return false;
                                }
                                times.allPictures = ms();
                                return true;
                            },
                            60000);
        // The raw figures, counted after the rows.
        const bool figured = QTest::qWaitFor(
            [&] {
                for (int row = 0; row < m_model->rowCount(); ++row) {
                    if (m_model->entry(row).accepted() && !m_model->entry(row).frame.figures)
                        return false;
                }
                times.allFigures = ms();
                return true;
            },
            60000);
        if (!loaded || !pictured || !figured)
            std::fprintf(stderr, "tolvik-cardbench: %s did not finish in a minute\n",
                         qPrintable(folder));
        ticker.stop();
        m_view->viewport()->removeEventFilter(&paintWatch);
        return times;
    }

    // The longest sort of any column, either way, in ms.
    std::pair<double, QString> slowestSort()
    {
        double slowest = 0;
        QString which;
        for (int column = TCardModel::FileName; column < TCardModel::ColumnCount; ++column) {
            for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder}) {
                QElapsedTimer clock;
                clock.start();
                m_view->sortByColumn(column, order);
                QCoreApplication::processEvents(); // the repaint
                const double took = clock.nsecsElapsed() / 1e6;
                if (took > slowest) {
                    slowest = took;
                    which = m_model->headerData(column, Qt::Horizontal).toString();
                }
            }
        }
        return {slowest, which};
    }

    // The longest step of typing a filter letter by letter, then clearing it,
    // and of choosing each lens, in ms.
    double slowestFilter()
    {
        double slowest = 0;
        const auto timed = [&](const std::function<void()> &step) {
            QElapsedTimer clock;
            clock.start();
            step();
            QCoreApplication::processEvents();
            slowest = std::max(slowest, clock.nsecsElapsed() / 1e6);
        };
        auto *field = m_window.findChild<QLineEdit *>();
        const QString typed = QStringLiteral("summilux 1/250");
        for (qsizetype n = 1; n <= typed.size(); ++n)
            timed([&] { field->setText(typed.left(n)); });
        timed([&] { field->clear(); });
        auto *lenses = m_window.findChild<QComboBox *>();
        for (int i = lenses->count() - 1; i >= 0; --i)
            timed([&] { lenses->setCurrentIndex(i); });
        return slowest;
    }

private:
    bool shownPicturesMade() const
    {
        const int top = std::max(m_view->rowAt(0), 0);
        int bottom = m_view->rowAt(m_view->viewport()->height() - 1);
        if (bottom < 0)
            bottom = m_filter->rowCount() - 1;
        for (int row = top; row <= bottom; ++row) {
            const int source = m_filter->mapToSource(m_filter->index(row, 0)).row();
            if (m_model->entry(source).accepted() && !m_model->hasPicture(source))
                return false;
        }
        return true;
    }

    TCardWindow &m_window;
    QTableView *m_view;
    QSortFilterProxyModel *m_filter;
    TCardModel *m_model;
    QProgressBar *m_progress;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brekko"));
    QCoreApplication::setApplicationName(QStringLiteral("Tolvik"));
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: tolvik-cardbench FOLDER [OPENS]\n");
        return 2;
    }
    const int opens = argc == 3 ? std::atoi(argv[2]) : 3;
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());

    TCardWindow window;
    window.resize(1320, 700);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return 1;
    TBench bench(window);
    const QString folder = QString::fromLocal8Bit(argv[1]);
    // Opened twice in a row, then sorted and filtered, then opened again up
    // to opens times in all.
    struct TOpen {
        TOpenTimes times;
        std::pair<double, double> memory;
    };
    std::vector<TOpen> opened;
    const auto open = [&] {
        const TOpenTimes times = bench.open(folder);
        opened.push_back({times, memoryMB()});
    };
    open();
    open();
    const auto [sortMs, sortColumn] = bench.slowestSort();
    const double filterMs = bench.slowestFilter();
    while (int(opened.size()) < std::max(opens, 3))
        open();

    const int rows = window.findChild<QTableView *>()->model()->rowCount();
    std::printf(
        "| open | rows | first rows shown ms | every row ms | shown pictures ms | "
        "every picture ms | every raw figure ms | longest event-loop gap ms (its CPU ms) | peak MB | "
        "resident MB |\n"
        "|---|---|---|---|---|---|---|---|---|---|\n");
    for (std::size_t i = 0; i < opened.size(); ++i) {
        const TOpenTimes &t = opened[i].times;
        std::printf("| %zu | %d | %.0f | %.0f | %.0f | %.0f | %.0f | %.1f (%.1f) | %.1f | %.1f |\n",
                    i + 1, rows, t.firstRows, t.allRows, t.shownPictures, t.allPictures,
                    t.allFigures, t.longestGap,
                    t.longestCpuGap, opened[i].memory.first, opened[i].memory.second);
    }
    std::printf("\nslowest sort: %.1f ms (%s); slowest filter step: %.1f ms\n", sortMs,
                qPrintable(sortColumn), filterMs);
    return 0;
}
