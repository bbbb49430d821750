#include "raw/sensorlist.h"

#include "rawfile/tcodetable.h"

#include <cmath>

namespace raw {

namespace {

// Frames at the apertures that show the glass sharpest count this much more
// for spots than frames at wider ones.
constexpr double kSmallApertureWeight = 2;
constexpr double kSmallApertureFrom = 5.6, kSmallApertureTo = 22;
// The camera's aperture estimate lies this close to a marked stop.
constexpr double kApertureSlack = 0.05;

constexpr TCodeText kKindNames[] = {{TSensorMark::Hot, "hot"},
                                    {TSensorMark::Stuck, "stuck"},
                                    {TSensorMark::Dead, "dead"},
                                    {TSensorMark::Dust, "dust"},
                                    {TSensorMark::Bright, "bright"}};
constexpr TCodeText kKindTitles[] = {{TSensorMark::Hot, "Hot pixel"},
                                     {TSensorMark::Stuck, "Stuck pixel"},
                                     {TSensorMark::Dead, "Dead pixel"},
                                     {TSensorMark::Dust, "Dust spot"},
                                     {TSensorMark::Bright, "Bright spot"}};

} // namespace

std::vector<TSensorMark> sensorMarks(const TSensorCheckResult &result)
{
    std::vector<TSensorMark> marks;
    marks.reserve(result.defects.size() + result.spots.size());
    for (const TSensorDefect &d : result.defects) {
        TSensorMark m;
        m.kind = d.kind == TSensorDefect::Hot     ? TSensorMark::Hot
                 : d.kind == TSensorDefect::Stuck ? TSensorMark::Stuck
                                                  : TSensorMark::Dead;
        m.x = d.x;
        m.y = d.y;
        m.frames = d.frames;
        marks.push_back(m);
    }
    for (const TSensorSpot &s : result.spots) {
        TSensorMark m;
        m.kind = s.bright ? TSensorMark::Bright : TSensorMark::Dust;
        m.x = s.x;
        m.y = s.y;
        m.radius = s.radius;
        m.contrastPercent = s.contrastPercent;
        m.frames = s.frames;
        marks.push_back(m);
    }
    return marks;
}

QString markKindName(TSensorMark::Kind kind)
{
    return lookup(kKindNames, kind, "");
}

QString markKindTitle(TSensorMark::Kind kind)
{
    return lookup(kKindTitles, kind, "");
}

QStringList sensorListHeader()
{
    return {QStringLiteral("kind"),   QStringLiteral("x"),          QStringLiteral("y"),
            QStringLiteral("radius"), QStringLiteral("contrast %"), QStringLiteral("frames")};
}

QStringList sensorListCells(const TSensorMark &mark)
{
    const bool spot = mark.isSpot();
    return {markKindName(mark.kind),
            QString::number(qRound(mark.x)),
            QString::number(qRound(mark.y)),
            spot ? QString::number(qRound(mark.radius)) : QString(),
            spot ? QString::number(mark.contrastPercent, 'f', 1) : QString(),
            QString::number(mark.frames)};
}

QString sensorListTabbed(const std::vector<TSensorMark> &marks)
{
    QString text = sensorListHeader().join(QLatin1Char('\t')) + QLatin1Char('\n');
    for (const TSensorMark &mark : marks)
        text += sensorListCells(mark).join(QLatin1Char('\t')) + QLatin1Char('\n');
    return text;
}

QString markDescription(const TSensorMark &mark, int framesChecked)
{
    const QString at = QStringLiteral("%1 at x %2, y %3")
                           .arg(markKindTitle(mark.kind))
                           .arg(qRound(mark.x))
                           .arg(qRound(mark.y));
    if (!mark.isSpot())
        return at +
               QStringLiteral(": stood out in %1 of %2 frames").arg(mark.frames).arg(framesChecked);
    return at + QStringLiteral(": radius %1 px, contrast %2 %, measured in %3 of %4 frames")
                    .arg(qRound(mark.radius))
                    .arg(QString::number(mark.contrastPercent, 'f', 1))
                    .arg(mark.frames)
                    .arg(framesChecked);
}

QString checkedText(const TSensorCheckResult &result)
{
    return QStringLiteral("Frames checked: %1").arg(result.frames);
}

QString skippedText(const TSensorCheckResult &result)
{
    if (result.skippedOtherCamera + result.skippedCutShort + result.skippedOtherSize == 0)
        return {};
    return QStringLiteral("Frames skipped: %1 of another camera, %2 cut short, %3 of another raw "
                          "size")
        .arg(result.skippedOtherCamera)
        .arg(result.skippedCutShort)
        .arg(result.skippedOtherSize);
}

QString mapText(const TSensorCheckResult &result)
{
    if (!result.width)
        return {};
    return QStringLiteral("Sensor map: %1 x %2 pixels (raw image; active area x %3-%4, y %5-%6)")
        .arg(result.width)
        .arg(result.height)
        .arg(result.activeLeft)
        .arg(result.activeRight - 1)
        .arg(result.activeTop)
        .arg(result.activeBottom - 1);
}

double apertureWeight(double fNumber)
{
    return fNumber >= kSmallApertureFrom - kApertureSlack &&
                   fNumber <= kSmallApertureTo + kApertureSlack
               ? kSmallApertureWeight
               : 1;
}

} // namespace raw
