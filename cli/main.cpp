// tolvik-info: prints what Tolvik shows for raw files, for scripts and for
// sorting a card full of files.
//
// This file is built twice. tolvik-info reads and prints values with Qt Core
// alone; for a drawing (--report, --contact-sheet) it hands the process over
// to its drawing half, tolvik-info-draw, built with TOLVIK_INFO_DRAWS and Qt
// Gui, which takes the same arguments and draws. Only drawing loads Qt Gui.

#include "card/cardentry.h"
#include "card/dngfiles.h"
#include "card/filerows.h"
#include "card/inorder.h"
#include "card/limits.h"
#include "card/queries.h"
#include "card/records.h"
#include "card/safewrite.h"
#include "card/statistics.h"
#include "cli/marking.h"
#include "cli/rawstats.h"
#include "cli/sensorcheck.h"
#include "cli/sonymakernote.h"
#include "exif/paneltexts.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>
#include <vector>

#ifdef TOLVIK_INFO_DRAWS
#include "documents/framefile.h"
#include "documents/tcontactsheet.h"
#include "documents/treport.h"
#include "raw/decode.h"
#include "raw/develop.h"
#include "raw/rawstats.h"

#include <QGuiApplication>
#endif

namespace {

// The help text, also the source of the manual page (help2man): every option,
// the exit status and examples.
constexpr char kUsage[] =
    "Usage: tolvik-info [--json | --csv] [--exact] [--all] [--preflight] [-j N] FILE|FOLDER...\n"
    "  or:  tolvik-info [--json | --csv] --stats FILE|FOLDER...\n"
    "  or:  tolvik-info [--json | --csv] [-j N] --raw-stats FILE|FOLDER...\n"
    "  or:  tolvik-info [--exact] [--raw-stats] --report OUT.pdf FILE\n"
    "  or:  tolvik-info [--raw-stats] [-j N] --contact-sheet OUT.pdf FILE|FOLDER...\n"
    "  or:  tolvik-info [--half] --render OUT.jpg|OUT.png|OUT.tif FILE\n"
    "  or:  tolvik-info [--half] [--format jpg|png|tif] --render OUTFOLDER FILE|FOLDER...\n"
    "  or:  tolvik-info [--json] [--all] --sony-makernote OFFSET FILE\n"
    "  or:  tolvik-info [--json] [-j N] --sensor-check FILE|FOLDER...\n"
    "  or:  tolvik-info [--rate N | --reject] [--label COLOUR|none] FILE|FOLDER...\n"
    "\n"
    "Reads each Leica M9 / M Monochrom DNG and prints the rows of Tolvik's\n"
    "information panel (camera, serial number, firmware, file name, date/time,\n"
    "ISO, exposure, aperture, metering, program, correction, frame selector,\n"
    "focal length, lens, light values, temperature, image ID).\n"
    "A folder is searched, with its sub-folders, for *.dng files in any letter\n"
    "case, read in name order; a file named here is read whatever its name.\n"
    "A file that is not accepted is reported on stderr and the next file follows.\n"
    "Only regular files are read (a pipe or a device is reported, not opened); a file\n"
    "whose reading has not ended after 20 s (a share that hangs) is reported and\n"
    "the next file follows.\n"
    "The culling marks in a file's XMP sidecar follow its rows: \"Rating:\" (stars,\n"
    "or \"rejected\") and \"Label:\" where the file has them; in CSV and JSON always,\n"
    "as rating (-1 rejected, 0 unrated, 1 to 5 stars) and label, empty or null\n"
    "when unset.\n"
    "\n"
    "Options:\n"
    "  --json       one JSON object per file, one line each\n"
    "  --csv        a header row and one row per file (RFC 4180); a rejected file's\n"
    "               row has its path and the reason in the last column, \"error\"\n"
    "  --stats      count the frames per lens, focal length, aperture, ISO, exposure\n"
    "               time, program and day, and give the range of sensor temperatures\n"
    "  --raw-stats  the exposure of the raw data over the default crop: per channel\n"
    "               (R, G, B; L of the Monochrom) the share of pixels at or above\n"
    "               white and the headroom in EV of the 99.9th percentile below white;\n"
    "               with --report or --contact-sheet, printed with each frame\n"
    "  --exact      the values as the camera wrote them (\"1/15\", \"\u2248 f/5.6\",\n"
    "               \"-0.7 EV\", ISO dates) instead of the panel's roundings; with\n"
    "               --json also as numbers (iso, exposure_time_s, aperture_estimate, ...)\n"
    "  --all        add every query and decoder of the reader, keyed by method name,\n"
    "               and the values stored per directory\n"
    "  --preflight  run the quick pass instead (model, thumbnail, F-number, focal length)\n"
    "  -j N         read N files at a time (default: one per processor core);\n"
    "               the output is the same for every N\n"
    "  --report OUT.pdf\n"
    "               write the one-page report of FILE as a PDF, as the window prints it\n"
    "  --contact-sheet OUT.pdf\n"
    "               write a contact sheet of the files: 20 previews a page, each with\n"
    "               its name and exact values\n"
    "  --render OUT\n"
    "               develop the raw picture of each file (black and white levels, the\n"
    "               camera's white balance and colour matrices, sRGB; no tone curve, no\n"
    "               sharpening) and write it upright and cropped: OUT's extension picks\n"
    "               JPEG (.jpg), 8-bit PNG (.png) or 16-bit TIFF (.tif); with several files\n"
    "               or a folder OUT is a folder and each frame is written there under its\n"
    "               base name\n"
    "  --half       with --render: half size, one pixel per 2 x 2 cell of the sensor\n"
    "  --format jpg|png|tif\n"
    "               with --render to a folder: the files' format (default jpg)\n"
    "  --rate N     give each file N stars (0 to 5) in its XMP sidecar (L1001234.xmp),\n"
    "               where other photo tools read it; what else the sidecar holds is kept\n"
    "  --reject     mark each file rejected (rating -1) in its sidecar\n"
    "  --label COLOUR\n"
    "               give each file a colour label (Red, Yellow, Green, Blue, Purple, none)\n"
    "  --sidecar-name base|full\n"
    "               with the rows, --contact-sheet, --rate, --reject and --label: the\n"
    "               sidecar a new mark is written to and, where both exist, the one read:\n"
    "               base L1001234.xmp (the default, what most editors read) or full\n"
    "               L1001234.DNG.xmp (darktable's and digiKam's)\n"
    "  --sony-makernote OFFSET\n"
    "               read IFD0 of the one FILE (any camera), walk the Sony maker-note\n"
    "               directory at the absolute OFFSET (decimal or 0x-hex) and print its values\n"
    "  --sensor-check\n"
    "               read every frame's raw data and list, in raw coordinates, hot, stuck\n"
    "               and dead pixels and spots on the sensor's glass (dust, bright spots)\n"
    "               that show in the frames; frames of another camera or raw size and\n"
    "               cut-short frames are skipped and counted\n"
    "  -h, --help   show this text and exit\n"
    "  --version    show the program's name and version and exit\n"
    "\n"
    "Exit status:\n"
    "  0  every file was accepted whole and every output written\n"
    "  1  a file was rejected or ends before its data (its values are still\n"
    "     given), a raw picture could not be developed, or the OFFSET lies\n"
    "     outside the file\n"
    "  2  usage error, or an output that cannot or must not be written: one of\n"
    "     the files read, an existing file that is not a PDF, a folder that is\n"
    "     missing or read-only (all checked before any file is read), or a write\n"
    "     that failed (the reason is given; nothing is left half written)\n"
    "\n"
    "Examples:\n"
    "  tolvik-info L1002622.DNG                   the panel's rows of one file\n"
    "  tolvik-info --csv /media/card > card.csv   a table of every DNG on the card\n"
    "  tolvik-info --json --all L1002622.DNG      every decoder and stored value\n"
    "  tolvik-info --stats /media/card            frames per lens, ISO, day, ...\n"
    "  tolvik-info --raw-stats /media/card        clipped pixels and headroom per channel\n"
    "  tolvik-info --raw-stats --contact-sheet card.pdf /media/card\n"
    "                                             previews with stars, labels and exposure\n"
    "  tolvik-info --report L1002622.pdf L1002622.DNG\n"
    "                                             the printed report as a PDF\n";

// A progress line appears only for runs long enough to be watched.
constexpr int kProgressFromFiles = 101;

struct TOptions {
    TFormat format = TFormat::Text;
    QStringList given; // the options as named: the mode they choose, how they combine
    TRowOptions rows;
    int jobs = 0; // 0: one per core
    bool help = false;
    bool version = false;
    bool rawStats = false;    // --raw-stats: the exposure figures of the raw data
    QString reportPath;       // --report: the PDF of one file
    QString contactSheetPath; // --contact-sheet: the PDF of every file
    QString renderPath;       // --render: the developed frame, or a folder of them
    QString renderFormat;     // --format: the frames' format in a folder
    bool half = false;        // --half: half-size frames
    QString sonyOffset;       // --sony-makernote: where the Sony directory lies
    TMarking marking;         // --rate, --reject, --label: marks for the sidecars
    // --sidecar-name: the sidecar marks are written to, and read where both exist.
    TSidecarNaming naming = TSidecarNaming::BaseName;
    QStringList paths;
};

// What a run does: the rows of each file, or one of the others.
enum TMode : unsigned {
    Rows = 1,
    Stats = 2,
    Report = 4,
    ContactSheet = 8,
    SonyMakerNote = 16,
    SensorCheck = 32,
    RawStats = 64,
    Render = 128,
    Marking = 256,
};

struct TModeOption {
    const char *option;
    unsigned chooses; // the mode it chooses; 0 for one that changes a mode
    unsigned modes;   // the modes it may be given in
};
// The options that choose a mode, the first given deciding (--raw-stats
// alone chooses its own, with --report or --contact-sheet it adds the
// figures), then those that change one.
constexpr TModeOption kModeOptions[] = {
    {"--stats", Stats, Stats},
    {"--report", Report, Report},
    {"--contact-sheet", ContactSheet, ContactSheet},
    {"--sony-makernote", SonyMakerNote, SonyMakerNote},
    {"--sensor-check", SensorCheck, SensorCheck},
    {"--raw-stats", RawStats, RawStats | Report | ContactSheet},
    {"--render", Render, Render},
    {"--rate", Marking, Marking},
    {"--reject", Marking, Marking},
    {"--label", Marking, Marking},
    {"--json", 0, Rows | Stats | SonyMakerNote | SensorCheck | RawStats},
    {"--csv", 0, Rows | Stats | SonyMakerNote | RawStats},
    {"--exact", 0, Rows | Report},
    {"--all", 0, Rows | SonyMakerNote},
    {"--preflight", 0, Rows},
    {"-j", 0, Rows | Stats | ContactSheet | SensorCheck | RawStats},
    {"--half", 0, Render},
    {"--format", 0, Render},
    {"--sidecar-name", 0, Rows | ContactSheet | Marking},
};

// The option that chose the run's mode; null for the rows of files.
const TModeOption *modeChooser(const TOptions &options)
{
    for (const TModeOption &entry : kModeOptions) {
        if (entry.chooses && options.given.contains(QLatin1String(entry.option)))
            return &entry;
    }
    return nullptr;
}

TMode modeOf(const TOptions &options)
{
    const TModeOption *chooser = modeChooser(options);
    return chooser ? TMode(chooser->chooses) : Rows;
}

// Options that cannot work together, and inputs a mode cannot take; an
// empty text when all fits. Nothing is ever left silently unused.
QString combinationProblem(const TOptions &options)
{
    const TModeOption *chooser = modeChooser(options);
    const TMode mode = modeOf(options);
    const QString chosen =
        chooser ? QLatin1String(chooser->option) : QStringLiteral("the rows of files");
    for (const TModeOption &entry : kModeOptions) {
        if (options.given.contains(QLatin1String(entry.option)) && !(entry.modes & mode))
            return QStringLiteral("%1 cannot be used with %2")
                .arg(QLatin1String(entry.option), chosen);
    }
    if ((mode == Report || mode == SonyMakerNote) &&
        (options.paths.size() != 1 || QFileInfo(options.paths.first()).isDir()))
        return QStringLiteral("%1 takes one file, not %2")
            .arg(chosen, options.paths.size() != 1 ? QStringLiteral("several")
                                                   : QStringLiteral("a folder"));
    return QString();
}

// Fills options from the arguments; returns the reason they are wrong, or
// an empty text.
QString parseArguments(const QStringList &args, TOptions &options)
{
    bool optionsEnd = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        // An option's value: the next argument, or the rest of "-j4".
        const auto value = [&](qsizetype prefix) -> QString {
            if (arg.size() > prefix)
                return arg.mid(prefix);
            return ++i < args.size() ? args[i] : QString();
        };
        if (optionsEnd || arg == QLatin1String("-") || !arg.startsWith(QLatin1Char('-'))) {
            options.paths.append(arg);
        } else if (arg == QLatin1String("--")) {
            optionsEnd = true;
        } else if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            options.help = true;
            return QString();
        } else if (arg == QLatin1String("--version")) {
            options.version = true;
            return QString();
        } else if (arg == QLatin1String("--json") || arg == QLatin1String("--csv")) {
            if (options.format != TFormat::Text)
                return QStringLiteral("--json and --csv cannot be used together");
            options.format = arg == QLatin1String("--json") ? TFormat::Json : TFormat::Csv;
        } else if (arg == QLatin1String("--all")) {
            options.rows.all = true;
        } else if (arg == QLatin1String("--stats") || arg == QLatin1String("--sensor-check")) {
            // they choose their mode as given (modeOf)
        } else if (arg == QLatin1String("--raw-stats")) {
            options.rawStats = true;
        } else if (arg == QLatin1String("--rate") || arg == QLatin1String("--label") ||
                   arg == QLatin1String("--reject")) {
            const QString mark = arg == QLatin1String("--reject") ? QString() : value(arg.size());
            if (arg != QLatin1String("--label") && options.marking.rating)
                return QStringLiteral("--rate and --reject cannot be used together");
            if (const QString wrong = parseMarking(arg, mark, options.marking); !wrong.isEmpty())
                return wrong;
        } else if (arg == QLatin1String("--sidecar-name")) {
            const QString name = value(arg.size());
            if (name != QLatin1String("base") && name != QLatin1String("full"))
                return QStringLiteral("--sidecar-name takes base or full");
            options.naming =
                name == QLatin1String("full") ? TSidecarNaming::FullName : TSidecarNaming::BaseName;
        } else if (arg == QLatin1String("--exact")) {
            options.rows.exact = true;
        } else if (arg == QLatin1String("--preflight")) {
            options.rows.preflight = true;
        } else if (arg == QLatin1String("--report")) {
            options.reportPath = value(arg.size());
            if (options.reportPath.isEmpty())
                return QStringLiteral("--report needs the path of the PDF");
        } else if (arg == QLatin1String("--contact-sheet")) {
            options.contactSheetPath = value(arg.size());
            if (options.contactSheetPath.isEmpty())
                return QStringLiteral("--contact-sheet needs the path of the PDF");
        } else if (arg == QLatin1String("--render")) {
            options.renderPath = value(arg.size());
            if (options.renderPath.isEmpty())
                return QStringLiteral("--render needs the path of the picture or folder");
        } else if (arg == QLatin1String("--half")) {
            options.half = true;
        } else if (arg == QLatin1String("--format")) {
            options.renderFormat = value(arg.size());
            if (!QStringList{"jpg", "png", "tif"}.contains(options.renderFormat))
                return QStringLiteral("--format takes jpg, png or tif");
        } else if (arg == QLatin1String("--sony-makernote")) {
            options.sonyOffset = value(arg.size());
            if (options.sonyOffset.isEmpty())
                return QStringLiteral("--sony-makernote needs an offset");
        } else if (arg.startsWith(QLatin1String("-j"))) {
            bool ok = false;
            options.jobs = value(2).toInt(&ok);
            if (!ok || options.jobs < 1)
                return QStringLiteral("-j needs a number of files at a time, 1 or more");
        } else {
            return QStringLiteral("unknown option ") + arg;
        }
        if (!optionsEnd && arg.startsWith(QLatin1Char('-')) && arg != QLatin1String("-"))
            options.given.append(arg.startsWith(QLatin1String("-j")) ? QStringLiteral("-j") : arg);
    }
    if (options.paths.isEmpty())
        return QStringLiteral("no file given");
    if (const QString clash = combinationProblem(options); !clash.isEmpty())
        return clash;
    options.rows.numbers = options.rows.exact && options.format == TFormat::Json;
    options.rows.exposureSeconds = options.rows.exact && options.format == TFormat::Csv;
    options.rows.passFactsWhenRejected = options.format == TFormat::Json;
    options.rows.marksAsText = options.format == TFormat::Text;
    return QString();
}

#ifdef TOLVIK_INFO_DRAWS
// What a contact sheet names in its header: the folder given, or the one the
// first file lies in.
QString sheetFolder(const QStringList &paths)
{
    const QFileInfo first(paths.first());
    return first.isDir() ? first.absoluteFilePath() : first.absolutePath();
}
#endif

// Folders become the DNG files below them; files stay as named.
QStringList filesToRead(const QStringList &paths)
{
    QStringList files;
    for (const QString &path : paths) {
        if (QFileInfo(path).isDir())
            files += dngFilesUnder(path);
        else
            files.append(path);
    }
    return files;
}

struct TFileResult {
    QByteArray out;
    QString error;     // why the file is not accepted, or that it is incomplete
    QString markError; // why its sidecar could not be read (its marks count as unset)
};

TFileResult readFile(const QString &path, const TOptions &options)
{
    TCardEntry entry = readCardEntry(path, &options.rows, options.naming);
    if (options.format == TFormat::Text && !options.rows.all)
        entry.rows.removeFirst(); // the pass's result, for --all
    return {record(options.format, path, entry.rows, entry.accepted(), entry.error), entry.error,
            entry.markError};
}

// What is said of a file whose reading did not end in time.
QString unansweredText()
{
    return QStringLiteral("did not answer within %1 s (a share that hangs?); left behind")
        .arg(limits::kUnansweredSeconds);
}

TCardEntry unansweredEntry(const QString &path)
{
    TCardEntry entry;
    entry.path = path;
    entry.error = unansweredText();
    return entry;
}

// A thread was left blocked in a file that did not answer.
bool g_threadLeftBehind = false;

// Reads the files in order on jobs threads; a file that does not answer is
// given up on (unanswered) so that the others go on.
template <typename Result, typename Work, typename Deliver, typename Unanswered>
void readPatiently(const QStringList &files, int jobs, Work work, Deliver deliver,
                   Unanswered unanswered)
{
    g_threadLeftBehind |=
        runInOrderPatiently<Result>(int(files.size()), jobs, work, deliver, unanswered,
                                    std::chrono::seconds(limits::kUnansweredSeconds)) > 0;
}

// The exit status, once all is written. A thread left blocked in a file
// refers to main's objects: the process then ends at once, without
// returning from main.
int finished(int status)
{
    if (g_threadLeftBehind) {
        std::fflush(stdout);
        std::fflush(stderr);
        std::_Exit(status);
    }
    return status;
}

// "312/1000 files" on a terminal, rewritten in place and cleared at the end.
class TProgress {
public:
    explicit TProgress(int total)
        : m_total(total), m_shown(total >= kProgressFromFiles && isatty(STDERR_FILENO)),
          m_sharesLine(m_shown && isatty(STDOUT_FILENO))
    {
    }
    ~TProgress() { clear(); }
    void show(int done)
    {
        if (m_shown)
            std::fprintf(stderr, "\r%d/%d files", done, m_total);
    }
    void clear()
    {
        if (m_shown)
            std::fputs("\r\033[K", stderr);
    }
    // Output to the same terminal starts on a cleared line.
    void beforeOutput()
    {
        if (m_sharesLine)
            clear();
    }
    void afterOutput()
    {
        if (m_sharesLine)
            std::fflush(stdout);
    }

private:
    int m_total;
    bool m_shown;
    bool m_sharesLine;
};

#ifdef TOLVIK_INFO_DRAWS
// The report of one file as a PDF, with its raw exposure figures when
// rawFigures; nothing is written for a rejected file.
int writeReport(const QString &pdfPath, const QString &path, TValueStyle style, bool rawFigures)
{
    TM9File file(path);
    if (!file.processFile()) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(fileError(file, false)));
        return 1;
    }
    if (!file.hasPreviewImage()) {
        std::fprintf(stderr, "%s: no preview picture to report\n", qPrintable(path));
        return 1;
    }
    std::optional<raw::TRawFigures> figures;
    if (rawFigures)
        figures = raw::rawFiguresOfFile(path);
    if (const QString failure = writeReportPdf(file, pdfPath, style, figures); !failure.isEmpty()) {
        std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(failure));
        return 2;
    }
    // Reported from the values read, with what could not be figured.
    int status = 0;
    for (const QString &finding : {fileFinding(file), figures ? figures->error : QString()}) {
        if (!finding.isEmpty()) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(finding));
            status = 1;
        }
    }
    return status;
}

// Where each file's frame is written, checked before any file is read: OUT
// itself for one file named, else OUT/<base name>.<format>. An empty text,
// or why they cannot be written (a usage error or a refused destination).
QString renderTargets(const TOptions &options, const QStringList &files, QStringList &targets,
                      TOutputKind &kind)
{
    const bool single =
        files.size() == 1 && options.paths.size() == 1 && !QFileInfo(options.paths.first()).isDir();
    if (single) {
        if (!options.renderFormat.isEmpty())
            return QStringLiteral("--format is for --render to a folder; the extension of %1 "
                                  "picks the format")
                .arg(options.renderPath);
        if (!frameKindOf(options.renderPath, &kind))
            return QStringLiteral("--render: %1 does not end in .jpg, .png or .tif")
                .arg(options.renderPath);
        targets = {options.renderPath};
    } else {
        if (!QFileInfo(options.renderPath).isDir())
            return writeFailure(options.renderPath,
                                QStringLiteral("is not a folder (several frames go into one)"));
        const QString format =
            options.renderFormat.isEmpty() ? QStringLiteral("jpg") : options.renderFormat;
        frameKindOf(QStringLiteral("x.") + format, &kind);
        const QDir folder(options.renderPath);
        for (const QString &file : files) {
            const QString target =
                folder.filePath(QFileInfo(file).completeBaseName() + QLatin1Char('.') + format);
            if (targets.contains(target))
                return writeFailure(target, QStringLiteral("would be written for two files"));
            targets.append(target);
        }
    }
    for (const QString &target : targets) {
        if (const QString refusal = outputRefusal(target, kind, files); !refusal.isEmpty())
            return refusal;
    }
    return QString();
}

// Develops one file's raw picture into target: 0 written, 1 the file cannot
// be developed, 2 the frame cannot be written.
int renderFrame(const QString &file, const QString &target, TOutputKind kind, bool half)
{
    TM9File m9(file);
    if (!m9.processFile()) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(file), qPrintable(fileError(m9, false)));
        return 1;
    }
    raw::TPicture picture;
    {
        const raw::TDecodeResult decoded = raw::decodeFile(file);
        if (!decoded.ok()) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(file), qPrintable(decoded.error));
            return 1;
        }
        raw::TDevelopOptions develop;
        develop.size = half ? raw::TSize::Half : raw::TSize::Full;
        develop.bits = frameBits(kind);
        picture = raw::develop(decoded.image, develop);
    } // the raw picture is let go before the frame is written
    if (picture.isNull()) {
        std::fprintf(stderr, "%s: the raw picture could not be developed\n", qPrintable(file));
        return 1;
    }
    if (const QString failure = writeFrame(picture, target, kind); !failure.isEmpty()) {
        std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(failure));
        return 2;
    }
    return 0;
}

// --render: every file's developed frame, one after the other (each
// development uses every core); the worst status of them.
int renderFrames(const TOptions &options, const QStringList &files)
{
    QStringList targets;
    TOutputKind kind = TOutputKind::Jpeg;
    if (const QString problem = renderTargets(options, files, targets, kind); !problem.isEmpty()) {
        std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(problem));
        return 2;
    }
    int status = 0;
    for (qsizetype i = 0; i < files.size(); ++i)
        status = std::max(status, renderFrame(files[i], targets[i], kind, options.half));
    return status;
}
#else
// The drawing half: beside tolvik-info in the build, in the folder of library
// programs when installed.
QString drawingProgram()
{
    const QDir here(QCoreApplication::applicationDirPath());
    const QString beside = here.filePath(QStringLiteral("tolvik-info-draw"));
    if (QFileInfo(beside).isExecutable())
        return beside;
    return QDir::cleanPath(here.filePath(QStringLiteral(TOLVIK_DRAW_FROM_BIN "/tolvik-info-draw")));
}

// Hands the process over to the drawing half with the same arguments; returns
// only when it cannot be started.
int handOverDrawing(char *argv[])
{
    const QByteArray program = QFile::encodeName(drawingProgram());
    std::vector<char *> arguments{const_cast<char *>(program.constData())};
    for (char **argument = argv + 1; *argument; ++argument)
        arguments.push_back(*argument);
    arguments.push_back(nullptr);
    std::fflush(stdout);
    ::execv(arguments[0], arguments.data());
    std::fprintf(stderr, "tolvik-info: cannot start %s: %s\n", program.constData(),
                 std::strerror(errno));
    return 1;
}
#endif

// Only the reader's own trace lines get through (QT_LOGGING_RULES turns them
// on); Qt's notes, such as one about a damaged thumbnail, are not output.
void keepOwnMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtFatalMsg || qstrncmp(context.category, "tolvik.", 7) == 0)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(keepOwnMessages);
    TOptions options;
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(QString::fromLocal8Bit(argv[i]));
    const QString problem = parseArguments(args, options);

    // Only the report and the contact sheet draw (fonts, pictures, PDF): they
    // need a GUI application, not a display. Reading and printing values needs neither.
    [[maybe_unused]] const bool drawing = !options.reportPath.isEmpty() ||
                                          !options.contactSheetPath.isEmpty() ||
                                          !options.renderPath.isEmpty();
#ifdef TOLVIK_INFO_DRAWS
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
#else
    QCoreApplication app(argc, argv);
#endif
    QCoreApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));

    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.version) {
        std::printf("tolvik-info %s\n", TOLVIK_VERSION);
        return 0;
    }
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "tolvik-info: %s\nTry 'tolvik-info --help'.\n", qPrintable(problem));
        return 2;
    }

    if (!options.sonyOffset.isEmpty())
        return runSonyMakerNote({options.sonyOffset, options.paths.first(), options.rows.all},
                                options.format);

    // The files are found (not read) first, so that a destination that is one
    // of them, or any file that is not a PDF, is refused before the reading.
    const QStringList files = filesToRead(options.paths);
    if (drawing && options.renderPath.isEmpty()) {
        const QString pdf =
            options.reportPath.isEmpty() ? options.contactSheetPath : options.reportPath;
        if (const QString refusal = outputRefusal(pdf, TOutputKind::Pdf, files);
            !refusal.isEmpty()) {
            std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(refusal));
            return 2;
        }
    }
#ifdef TOLVIK_INFO_DRAWS
    if (!options.reportPath.isEmpty())
        return writeReport(options.reportPath, files.first(),
                           options.rows.exact ? TValueStyle::Exact : TValueStyle::Specified,
                           options.rawStats);
    if (!options.renderPath.isEmpty())
        return renderFrames(options, files);
#else
    if (drawing)
        return handOverDrawing(argv);
#endif
    int jobs = options.jobs > 0 ? options.jobs : QThread::idealThreadCount();
    if (lcTiffEntries().isDebugEnabled())
        jobs = 1; // keeps each file's trace lines together
    jobs = std::max(1, std::min({jobs, limits::kMaxJobs, int(files.size())}));
    const TMode mode = modeOf(options);
    if (mode == SensorCheck)
        return runSensorCheck(files, options.format, jobs);
    if (mode == RawStats)
        return runRawStats(files, options.format, jobs);
    if (mode == Marking)
        return runMarking(files, options.marking, options.naming);

    int status = 0;
    TProgress progress(int(files.size()));
    // A rejected file, or one cut short whose values are still given.
    const auto reportProblem = [&](int i, const QString &error) {
        if (error.isEmpty())
            return;
        progress.clear();
        std::fprintf(stderr, "%s: %s\n", qPrintable(files[i]), qPrintable(error));
        status = 1;
    };
    // A sidecar that could not be read: said, but the file's values stand.
    const auto reportMarkError = [&](const QString &error) {
        if (error.isEmpty())
            return;
        progress.clear();
        std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(error));
    };
#ifdef TOLVIK_INFO_DRAWS
    if (mode == ContactSheet) {
        QList<TCardEntry> entries(files.size());
        readPatiently<TCardEntry>(
            files, jobs,
            [&](int i) {
                TCardEntry entry = readCardEntry(files[i], nullptr, options.naming);
                if (options.rawStats)
                    readRawFigures(entry);
                return entry;
            },
            [&](int i, TCardEntry &&entry) {
                reportProblem(i, entry.error);
                reportMarkError(entry.markError);
                if (entry.frame.figures)
                    reportProblem(i, entry.frame.figures->error);
                entries[i] = std::move(entry);
                progress.show(i + 1);
            },
            [&](int i) { return unansweredEntry(files[i]); });
        progress.clear();
        TContactSheet sheet(sheetFolder(options.paths), entries);
        sheet.setShowRawFigures(options.rawStats);
        if (const QString failure = writeContactSheetPdf(sheet, options.contactSheetPath);
            !failure.isEmpty()) {
            std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(failure));
            return finished(2);
        }
        return finished(status);
    }
#endif
    if (mode == Stats) {
        QList<TFrame> frames(files.size());
        readPatiently<TCardEntry>(
            files, jobs, [&](int i) { return readCardEntry(files[i]); },
            [&](int i, TCardEntry &&entry) {
                reportProblem(i, entry.error);
                frames[i] = std::move(entry.frame);
                progress.show(i + 1);
            },
            [&](int i) { return unansweredEntry(files[i]); });
        progress.clear();
        std::fputs(statisticsRecord(options.format, frames).constData(), stdout);
        return finished(status);
    }

    if (options.format == TFormat::Csv)
        std::fputs(csvHeader(fileRows(TM9File(), options.rows, false)).constData(), stdout);
    readPatiently<TFileResult>(
        files, jobs, [&](int i) { return readFile(files[i], options); },
        [&](int i, TFileResult &&result) {
            reportProblem(i, result.error);
            reportMarkError(result.markError);
            progress.beforeOutput();
            std::fwrite(result.out.constData(), 1, size_t(result.out.size()), stdout);
            progress.afterOutput();
            progress.show(i + 1);
        },
        [&](int i) {
            const QString error = unansweredText();
            const QList<TRow> rows = options.format == TFormat::Csv
                                         ? fileRows(TM9File(), options.rows, false)
                                         : QList<TRow>();
            return TFileResult{record(options.format, files[i], rows, false, error), error, {}};
        });
    return finished(status);
}
