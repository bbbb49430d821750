// The GPS directory: its walker, its tag names and the position accessors.

#include "rawfile/tcodetable.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

void TM9File::processGPSInfoIFD()
{
    TByteReader &r = m_reader;
    TGpsValues &g = m_gps;

    // A one-character text in the first byte of the field.
    const auto C1 = [&r] {
        const QChar c(r.readU8());
        r.skip(3);
        return QString(c);
    };
    const auto triple = [&](std::array<TRational, 3> &out) {
        readRationalArray(qint64(r.readU32()) + m_tiffBase, out);
    };

    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        const quint16 tag = r.readU16();
        const quint16 type = r.readU16();
        const quint32 count = r.readU32();
        qCDebug(lcTiffEntries).noquote() << QStringLiteral("Tag: 0x%1 %2, Typ: %3, Count: %4")
                                                .arg(tag, 4, 16, QLatin1Char(' '))
                                                .arg(exifTagName(tag), fieldTypeText(type))
                                                .arg(count);

        switch (tag) {
        case 0x0000: {
            QString version;
            for (int k = 0; k < 4; ++k)
                version += QString::number(r.readU8());
            g.versionId = version;
            break;
        }
        case 0x0001: g.latitudeRef = C1(); break;
        case 0x0002: triple(g.latitude); break;
        case 0x0003: g.longitudeRef = C1(); break;
        case 0x0004: triple(g.longitude); break;
        case 0x0007: triple(g.timeStamp); break;
        case 0x0009: g.status = C1(); break;
        case 0x000A: g.measureMode = C1(); break;
        case 0x0012: g.mapDatum = readIFDStringEntry(qint64(r.readU32()) + m_tiffBase); break;
        case 0x001D: g.dateStamp = readIFDStringEntry(qint64(r.readU32()) + m_tiffBase); break;
        case 0x001E:
            g.differential = r.readU16();
            r.skip(2);
            break;
        default: r.skip(4); break;
        }
    }
}

namespace {

// Integer quotient of one part, 0 when a part is 0 (the fraction is cut off).
quint32 wholePart(const TRational &part)
{
    return part.num != 0 && part.den != 0 ? part.num / part.den : 0;
}

// "52 31 12 ": the parts that have both numbers, each followed by a blank.
QString tripleText(const std::array<TRational, 3> &parts)
{
    QString text;
    for (const TRational &part : parts) {
        if (part.num != 0 && part.den != 0)
            text += QString::number(double(part.num / part.den), 'g', 6) + QLatin1Char(' ');
    }
    return text;
}

double tripleDegrees(const std::array<TRational, 3> &parts)
{
    return TM9File::grad2dezimalgrad(wholePart(parts[0]), wholePart(parts[1]), wholePart(parts[2]));
}

// GPS tags
constexpr TCodeText kGpsTagNames[] = {
    {0, "[GPS] GPSVersionID"},        {1, "[GPS] GPSLatitudeRef"},
    {2, "[GPS] GPSLatitude"},         {3, "[GPS] GPSLongitudeRef"},
    {4, "[GPS] GPSLongitude"},        {5, "[GPS] GPSAltitudeRef"},
    {6, "[GPS] GPSAltitude"},         {7, "[GPS] GPSTimeStamp"},
    {8, "[GPS] GPSSatellites"},       {9, "[GPS] GPSStatus"},
    {10, "[GPS] GPSMeasureMode"},     {11, "[GPS] GPSDOP"},
    {12, "[GPS] GPSSpeedRef"},        {13, "[GPS] GPSSpeed"},
    {14, "[GPS] GPSTrackRef"},        {15, "[GPS] GPSTrack"},
    {16, "[GPS] GPSImgDirectionRef"}, {17, "[GPS] GPSImgDirection"},
    {18, "[GPS] GPSMapDatum"},        {19, "[GPS] GPSDestLatitudeRef"},
    {20, "[GPS] GPSDestLatitude"},    {21, "[GPS] GPSDestLongitudeRef"},
    {22, "[GPS] GPSDestLongitude"},   {23, "[GPS] GPSDestBearingRef"},
    {24, "[GPS] GPSDestBearing"},     {25, "[GPS] GPSDestDistanceRef"},
    {26, "[GPS] GPSDestDistance"},    {27, "[GPS] GPSProcessingMethod"},
    {28, "[GPS] GPSAreaInformation"}, {29, "[GPS] GPSDateStamp"},
    {30, "[GPS] GPSDifferential"},
};

} // namespace

QString TM9File::gpsTagName(int tag)
{
    return lookup(kGpsTagNames, tag, "[Sony] --- unbekannt ---");
}

QString TM9File::gps_0x0002_LatitudeAsString() const
{
    return tripleText(m_gps.latitude);
}

QString TM9File::gps_0x0004_LongitudeAsString() const
{
    return tripleText(m_gps.longitude);
}

QString TM9File::gps_0x0007_TimeStampAsString() const
{
    return tripleText(m_gps.timeStamp);
}

double TM9File::gps_0x0002_LatitudeAsKML() const
{
    return tripleDegrees(m_gps.latitude);
}

double TM9File::gps_0x0004_LongitudeAsKML() const
{
    return tripleDegrees(m_gps.longitude);
}

double TM9File::grad2dezimalgrad(double degrees, double minutes, double seconds)
{
    return degrees + (seconds / 60 + minutes) / 60;
}
