// tolvik-info: prints what Tolvik shows for raw files, for scripts and for
// sorting a card full of files.

#include "cli/queries.h"
#include "cli/sonymakernote.h"
#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "treport.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QStringList>

#include <cmath>
#include <cstdio>

namespace {

constexpr char kUsage[] =
    "usage: tolvik-info [--json] [--all] [--preflight] FILE...\n"
    "       tolvik-info --report OUT.pdf FILE\n"
    "\n"
    "Reads each Leica M9 / M Monochrom DNG and prints the rows of Tolvik's\n"
    "information panel (camera, serial number, firmware, file name, date/time,\n"
    "ISO, exposure, aperture, metering, program, correction, frame selector,\n"
    "focal length, lens, light values, temperature, image ID).\n"
    "\n"
    "  --json       one JSON object per file, one line each\n"
    "  --all        add every query and decoder of the reader, keyed by method name,\n"
    "               and the values stored per directory\n"
    "  --preflight  run the quick pass instead (model, thumbnail, F-number, focal length)\n"
    "  --report OUT.pdf  write the one-page report of FILE, as the window prints it\n"
    "  --sony-makernote OFFSET\n"
    "               read IFD0 of the one FILE (any camera), walk the Sony maker-note\n"
    "               directory at the absolute OFFSET (decimal or 0x-hex) and print its values\n"
    "  --help       show this text\n"
    "\n"
    "A file that is not accepted is reported on stderr and the next file follows.\n"
    "Exit status: 0 all files accepted, 1 a file was rejected, 2 usage error.\n";

const char kRejected[] = "Fehler bei der Verarbeitung. Keine native DNG-Datei!";

using Row = TOutputRow;

QString jsonString(const QString &text)
{
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"': out += QLatin1String("\\\""); break;
        case '\\': out += QLatin1String("\\\\"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case '\t': out += QLatin1String("\\t"); break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    return out + QLatin1Char('"');
}

QString doubleText(double value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString jsonValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType: return QStringLiteral("null");
    case QMetaType::Bool: return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Double: {
        const double d = value.toDouble();
        return std::isfinite(d) ? doubleText(d) : jsonString(doubleText(d));
    }
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort: return value.toString();
    default: return jsonString(value.toString());
    }
}

QString plainValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::Double)
        return doubleText(value.toDouble());
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return value.toString();
}

void print(const QString &path, const QList<Row> &rows, bool json)
{
    QString out;
    if (json) {
        QStringList members{jsonString(QStringLiteral("file")) + QLatin1Char(':') +
                            jsonString(path)};
        for (const auto &[key, value] : rows) {
            // Captions lose their colon as keys: "Date/Time:" becomes "Date/Time".
            const QString name = key.endsWith(QLatin1Char(':')) ? key.chopped(1) : key;
            members.append(jsonString(name) + QLatin1Char(':') + jsonValue(value));
        }
        out = QLatin1Char('{') + members.join(QLatin1Char(',')) + QStringLiteral("}\n");
    } else {
        out = path + QLatin1Char('\n');
        for (const auto &[key, value] : rows)
            out += QStringLiteral("  %1 %2\n").arg(key, -26).arg(plainValue(value));
    }
    std::fputs(out.toUtf8().constData(), stdout);
}

QList<Row> panelRowsOf(const TM9File &file)
{
    QList<Row> rows;
    for (const auto &[caption, text] : panelRows(panelTexts(file)))
        rows.append({caption, text});
    return rows;
}

QList<Row> preflightRows(const TM9File &file)
{
    const QPixmap *thumbnail = file.thumbnailImage();
    return {
        {QStringLiteral("Model:"), file.exif().model},
        {QStringLiteral("Thumbnail:"),
         thumbnail ? QStringLiteral("%1x%2").arg(thumbnail->width()).arg(thumbnail->height())
                   : QStringLiteral("none")},
        {QStringLiteral("F-Number:"), file.exif_0x829D_FNumberAsString()},
        {QStringLiteral("Focal Length:"), focalLengthText(file)},
    };
}

QList<Row> queryRows(const TM9File &file)
{
    QList<Row> rows;
    for (const TQuery &query : allQueries())
        rows.append({QString::fromLatin1(query.name), query.value(file)});
    for (const TQuery &field : storedValues())
        rows.append({QString::fromLatin1(field.name), field.value(file)});
    return rows;
}

// Only the reader's own trace lines get through (QT_LOGGING_RULES turns them
// on); Qt's notes about the session or a damaged thumbnail are not output.
void keepOwnMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtFatalMsg || qstrncmp(context.category, "tolvik.", 7) == 0)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

// The report of one file as a PDF; nothing is written for a rejected file.
int writeReport(const QString &pdfPath, const QStringList &files)
{
    if (files.size() != 1) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const QString &path = files.first();
    TM9File file(path);
    if (!file.processFile()) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), kRejected);
        return 1;
    }
    if (!file.hasPreviewImage()) {
        std::fprintf(stderr, "%s: no preview picture to report\n", qPrintable(path));
        return 1;
    }
    if (!writeReportPdf(file, pdfPath)) {
        std::fprintf(stderr, "tolvik-info: cannot write %s\n", qPrintable(pdfPath));
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    // Pictures need a GUI application, not a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(keepOwnMessages);
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));

    bool json = false, all = false, preflight = false;
    QString reportPath;
    QStringList files;
    const QStringList args = app.arguments().mid(1);
    bool optionsEnd = false;
    std::optional<QString> sonyOffset;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (!optionsEnd && arg == QLatin1String("--report") && i + 1 < args.size()) {
            reportPath = args[++i];
        } else if (!optionsEnd && arg == QLatin1String("--sony-makernote") && i + 1 < args.size()) {
            sonyOffset = args[++i];
        } else if (!optionsEnd && arg == QLatin1String("--")) {
            optionsEnd = true;
        } else if (!optionsEnd && arg == QLatin1String("--help")) {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (!optionsEnd && arg == QLatin1String("--json")) {
            json = true;
        } else if (!optionsEnd && arg == QLatin1String("--all")) {
            all = true;
        } else if (!optionsEnd && arg == QLatin1String("--preflight")) {
            preflight = true;
        } else if (!optionsEnd && arg.startsWith(QLatin1Char('-')) && arg.size() > 1) {
            std::fprintf(stderr, "tolvik-info: unknown option %s\n\n%s", qPrintable(arg), kUsage);
            return 2;
        } else {
            files.append(arg);
        }
    }
    if (files.isEmpty() || (sonyOffset && files.size() != 1)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (sonyOffset)
        return runSonyMakerNote({*sonyOffset, files.first(), json, all}, &print);

    if (!reportPath.isEmpty())
        return writeReport(reportPath, files);

    int status = 0;
    for (const QString &path : files) {
        TM9File file(path);
        const bool accepted = preflight ? file.processFilePreflight() : file.processFile();
        if (!accepted) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(path), kRejected);
            status = 1;
        }
        if (!accepted && !json)
            continue;
        QList<Row> rows{
            {preflight ? QStringLiteral("processFilePreflight") : QStringLiteral("processFile"),
             accepted}};
        rows += preflight ? preflightRows(file) : panelRowsOf(file);
        if (all)
            rows += queryRows(file);
        print(path, rows, json);
    }
    return status;
}
