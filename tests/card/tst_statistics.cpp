// A card counted per category: natural order of the values, frames without a
// value last, rejected files left out, texts that round alike together.

#include "card/statistics.h"
#include "rawfile/tm9values.h"

#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(TCategory)

namespace {

const double kNone = std::nan("");

// A frame with the values the rows below vary; the rest as on the sample.
TFrame frame(const char *lens, const char *time, double seconds, double iso,
             const char *taken = "2012-06-17T14:32:05", double aperture = 5.6, bool accepted = true)
{
    TFrame f;
    f.accepted = accepted;
    f.texts.lens = QString::fromUtf8(lens);
    f.texts.expTime = QString::fromUtf8(time);
    f.numbers.exposureTime = seconds;
    f.texts.iso = std::isnan(iso) ? QStringLiteral("n.a") : QString::number(iso);
    f.numbers.iso = iso;
    f.numbers.taken = QDateTime::fromString(QString::fromLatin1(taken), Qt::ISODate);
    f.numbers.aperture = aperture;
    f.texts.apprAperture = exactAperture({quint32(std::lround(aperture * 100)), 100});
    return f;
}

} // namespace

class TestStatistics : public QObject {
    Q_OBJECT

private slots:
    void counts_data();
    void counts();
    void temperatureRangeSkipsRejected();
};

void TestStatistics::counts_data()
{
    QTest::addColumn<QList<TFrame>>("frames");
    QTest::addColumn<TCategory>("category");
    QTest::addColumn<QString>("expected");
    const QList<TFrame> card{
        frame("Summilux-M 50mm f/1.4 ASPH.", "1/8", 0.125, 1250),
        frame("Elmarit-M 28mm f/2.8", "1/125", 0.008, 160, "2012-06-18T09:00:00"),
        frame("n.a", "n.a", kNone, kNone, "", 2.0),
        frame("Elmarit-M 28mm f/2.8", "2", 2.0, 160, "2012-06-16T23:59:59", 5.64),
        frame("Noctilux-M 50mm f/1", "1/4000", 0.00025, 2500, "2012-06-17T00:00:00", 1.0, false),
    };
    QTest::newRow("lens: by name, none last, rejected left out")
        << card << TCategory::Lens
        << "Elmarit-M 28mm f/2.8: 2 | Summilux-M 50mm f/1.4 ASPH.: 1 | n.a: 1";
    QTest::newRow("exposure: by length, not by text")
        << card << TCategory::ExposureTime << "1/125: 1 | 1/8: 1 | 2: 1 | n.a: 1";
    QTest::newRow("ISO: 160 before 1250") << card << TCategory::Iso << "160: 2 | 1250: 1 | n.a: 1";
    QTest::newRow("day: by date, no date last")
        << card << TCategory::Day << "2012-06-16: 1 | 2012-06-17: 1 | 2012-06-18: 1 | n.a: 1";
    QTest::newRow("aperture: 5.6 and 5.64 read alike")
        << card << TCategory::Aperture << "\u2248 f/2.0: 1 | \u2248 f/5.6: 3";
    QTest::newRow("no frames") << QList<TFrame>{} << TCategory::Lens << "";
}

void TestStatistics::counts()
{
    QFETCH(QList<TFrame>, frames);
    QFETCH(TCategory, category);
    QStringList counted;
    for (const TCount &count : countPer(category, frames))
        counted.append(count.value + QStringLiteral(": ") + QString::number(count.frames));
    QTEST(counted.join(QStringLiteral(" | ")), "expected");
}

void TestStatistics::temperatureRangeSkipsRejected()
{
    QList<TFrame> frames(3);
    frames[0].accepted = frames[1].accepted = true;
    frames[0].numbers.sensorTemperature = 31;
    frames[1].numbers.sensorTemperature = -4;
    frames[2].numbers.sensorTemperature = 80;
    QCOMPARE(temperatureRangeText(temperatureRange(frames)),
             QStringLiteral("-4 \u00b0C \u2013 31 \u00b0C"));
    QCOMPARE(temperatureRangeText(temperatureRange({})), QStringLiteral("n.a"));
}

QTEST_GUILESS_MAIN(TestStatistics)
#include "tst_statistics.moc"
