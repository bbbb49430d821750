// tolvik-sensorcard: writes a card of test pictures with known sensor faults
// (tests/support/sensorcard.h) and scores a sensor check against it.
//   tolvik-sensorcard [--size WxH] [--frames N] [--seed S] [--clean] [--part K/N] OUT_DIR
//   tolvik-sensorcard --score TRUTH.json RESULT.json
// The card is OUT_DIR/L0000000.DNG ... and OUT_DIR/truth.json; frames that
// exist are kept. --part K/N writes only the frames i with i % N == K (to
// write a card with several processes). --score matches the check's JSON
// with the truth: a pixel at the same place and of the same kind, a spot of
// the same kind whose centre is within a quarter of its radius (at least 3
// pixels) and whose radius is within 25 % (at least 3 pixels); it prints
// precision and recall per kind and exits 1 when a kind misses its target.

#include "tools/sensorcard.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <cstdio>

namespace {

const char *kindName(fixture::PixelDefect::Kind kind)
{
    switch (kind) {
    case fixture::PixelDefect::Hot: return "hot";
    case fixture::PixelDefect::Stuck: return "stuck";
    case fixture::PixelDefect::Dead: return "dead";
    }
    return "";
}

QJsonObject readJson(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

bool sameSpot(const QJsonObject &truth, const QJsonObject &found)
{
    const double r = truth[QStringLiteral("radius")].toDouble();
    const double distance =
        std::hypot(truth[QStringLiteral("x")].toDouble() - found[QStringLiteral("x")].toDouble(),
                   truth[QStringLiteral("y")].toDouble() - found[QStringLiteral("y")].toDouble());
    return truth[QStringLiteral("kind")] == found[QStringLiteral("kind")] &&
           distance <= std::max(3.0, r / 4) &&
           std::abs(found[QStringLiteral("radius")].toDouble() - r) <= std::max(3.0, r / 4);
}

bool sameDefect(const QJsonObject &truth, const QJsonObject &found)
{
    return truth[QStringLiteral("kind")] == found[QStringLiteral("kind")] &&
           truth[QStringLiteral("x")] == found[QStringLiteral("x")] &&
           truth[QStringLiteral("y")] == found[QStringLiteral("y")];
}

// Precision and recall per kind; returns whether every kind reaches its target.
bool score(const QJsonObject &truth, const QJsonObject &found)
{
    struct Kind {
        const char *name, *list;
        double target;
    };
    static constexpr Kind kinds[] = {{"hot", "defects", 0.95},
                                     {"stuck", "defects", 0.95},
                                     {"dead", "defects", 0.95},
                                     {"dust", "spots", 0.9},
                                     {"bright", "spots", 0.9}};
    bool met = true;
    std::printf("| kind | injected | reported | matched | precision | recall "
                "|\n|---|---|---|---|---|---|\n");
    for (const Kind &k : kinds) {
        const QString name = QLatin1String(k.name), list = QLatin1String(k.list);
        const bool spots = list == QLatin1String("spots");
        QList<QJsonObject> t, f;
        for (const QJsonValue &v : truth[list].toArray())
            if (v[QStringLiteral("kind")].toString() == name)
                t.append(v.toObject());
        for (const QJsonValue &v : found[list].toArray())
            if (v[QStringLiteral("kind")].toString() == name)
                f.append(v.toObject());
        int matched = 0;
        QList<bool> used(f.size(), false);
        for (const QJsonObject &a : t) {
            for (qsizetype i = 0; i < f.size(); ++i) {
                if (!used[i] && (spots ? sameSpot(a, f[i]) : sameDefect(a, f[i]))) {
                    used[i] = true;
                    ++matched;
                    break;
                }
            }
        }
        const double precision = f.isEmpty() ? 1.0 : double(matched) / f.size();
        const double recall = t.isEmpty() ? 1.0 : double(matched) / t.size();
        met = met && precision >= k.target && recall >= k.target;
        std::printf("| %s | %d | %d | %d | %.3f | %.3f |\n", k.name, int(t.size()), int(f.size()),
                    matched, precision, recall);
    }
    return met;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Writes a card with known sensor faults, or scores a sensor check."));
    parser.addHelpOption();
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("stored size"),
                                  QStringLiteral("WxH"), QStringLiteral("5270x3516"));
    const QCommandLineOption frames(QStringLiteral("frames"), QStringLiteral("frames"),
                                    QStringLiteral("n"), QStringLiteral("100"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("placement"),
                                  QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption clean(QStringLiteral("clean"), QStringLiteral("no faults"));
    const QCommandLineOption part(QStringLiteral("part"), QStringLiteral("frames i % N == K"),
                                  QStringLiteral("K/N"), QStringLiteral("0/1"));
    const QCommandLineOption scoring(QStringLiteral("score"),
                                     QStringLiteral("score RESULT.json against TRUTH.json"));
    parser.addOptions({size, frames, seed, clean, part, scoring});
    parser.addPositionalArgument(QStringLiteral("out"), QStringLiteral("the card's folder"));
    parser.process(app);
    const QStringList args = parser.positionalArguments();
    if (parser.isSet(scoring)) {
        if (args.size() != 2)
            parser.showHelp(2);
        return score(readJson(args[0]), readJson(args[1])) ? 0 : 1;
    }
    const QStringList wh = parser.value(size).split(QLatin1Char('x'));
    const QStringList kn = parser.value(part).split(QLatin1Char('/'));
    if (args.size() != 1 || wh.size() != 2 || kn.size() != 2 || kn[1].toInt() < 1)
        parser.showHelp(2);
    const int width = std::max(64, wh[0].toInt()), height = std::max(48, wh[1].toInt());
    // Faults in proportion to the area, as many as on a full-size sensor at most.
    const double share = std::min(1.0, double(width) * height / (5270.0 * 3516.0));
    const auto some = [&](int full) { return std::max(2, int(std::lround(full * share))); };
    fixture::SensorCardCounts counts;
    if (!parser.isSet(clean))
        counts = {some(40), some(10), some(20), std::max(3, some(10)), std::max(3, some(10))};
    const fixture::SensorCard card =
        fixture::makeSensorCard(width, height, std::max(1, parser.value(frames).toInt()), counts,
                                parser.value(seed).toUInt());
    QDir dir(args[0]);
    if (!dir.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "tolvik-sensorcard: cannot make %s\n", qPrintable(args[0]));
        return 1;
    }
    QJsonArray defects, spots;
    for (const fixture::PixelDefect &d : card.defects)
        defects.append(QJsonObject{{QStringLiteral("x"), d.at.x()},
                                   {QStringLiteral("y"), d.at.y()},
                                   {QStringLiteral("kind"), QLatin1String(kindName(d.kind))}});
    for (const fixture::Spot &s : card.spots)
        spots.append(
            QJsonObject{{QStringLiteral("x"), s.at.x()},
                        {QStringLiteral("y"), s.at.y()},
                        {QStringLiteral("radius"), s.radius},
                        {QStringLiteral("kind"),
                         s.contrast < 0 ? QStringLiteral("dust") : QStringLiteral("bright")},
                        {QStringLiteral("contrast_percent"), s.contrast * 100},
                        {QStringLiteral("halo"), s.halo > 0}});
    const QJsonObject truth{{QStringLiteral("frames"), card.frames},
                            {QStringLiteral("defects"), defects},
                            {QStringLiteral("spots"), spots}};
    QSaveFile truthFile(dir.filePath(QStringLiteral("truth.json")));
    const QByteArray json = QJsonDocument(truth).toJson();
    if (!truthFile.open(QIODevice::WriteOnly) || truthFile.write(json) != json.size() ||
        !truthFile.commit()) {
        std::fprintf(stderr, "tolvik-sensorcard: cannot write the truth\n");
        return 1;
    }
    for (int f = kn[0].toInt(); f < card.frames; f += kn[1].toInt()) {
        const QString path =
            dir.filePath(QStringLiteral("L%1.DNG").arg(f, 7, 10, QLatin1Char('0')));
        if (!QFile::exists(path) &&
            !fixture::writeRawDng(path, fixture::sensorCardFrame(card, f))) {
            std::fprintf(stderr, "tolvik-sensorcard: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
