#include "tests/support/samplem9.h"

#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>

namespace fixture {

QImage sampleScene()
{
    QImage image(320, 240, QImage::Format_RGB888);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, 150);
    sky.setColorAt(0, QColor(32, 78, 160));
    sky.setColorAt(1, QColor(238, 196, 140));
    p.fillRect(0, 0, 320, 160, sky);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(252, 226, 120));
    p.drawEllipse(QPointF(228, 92), 26, 26);
    const auto hill = [&p](QPainterPath path, const QColor &colour) {
        path.lineTo(320, 240);
        path.lineTo(0, 240);
        p.setBrush(colour);
        p.drawPath(path);
    };
    QPainterPath far(QPointF(0, 150));
    far.cubicTo(60, 105, 120, 130, 180, 118);
    far.cubicTo(230, 108, 280, 132, 320, 126);
    hill(far, QColor(70, 96, 92));
    QPainterPath near(QPointF(0, 190));
    near.cubicTo(90, 160, 200, 205, 320, 176);
    hill(near, QColor(46, 70, 40));
    p.setBrush(QColor(200, 16, 46)); // a red-roofed hut
    p.drawRect(60, 168, 24, 14);
    p.end();

    // A little grain, the same every time, so that the picture's channels
    // spread as a photograph's do.
    QRandomGenerator grain(9);
    for (int y = 0; y < image.height(); ++y) {
        uchar *line = image.scanLine(y);
        for (int i = 0; i < image.width() * 3; ++i)
            line[i] = uchar(qBound(0, line[i] + int(grain.bounded(13)) - 6, 255));
    }
    return image;
}

namespace {

QByteArray packRgb(const QImage &picture)
{
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    QByteArray out;
    for (int y = 0; y < rgb.height(); ++y)
        out.append(reinterpret_cast<const char *>(rgb.constScanLine(y)), rgb.width() * 3);
    return out;
}

} // namespace

QByteArray leicaNote(const SampleM9 &o)
{
    auto d3000 = Ifd::make(), d3100 = Ifd::make(), d3400 = Ifd::make(), d3900 = Ifd::make();
    d3000->longValue(0x300A, 2).longValue(0x300B, 2).longValue(0x300D, 2);
    d3000->longValue(0x3033, 0).longValue(0x3034, 97);
    d3100->ascii(0x3103, "3912204", true).ascii(0x3109, "1.196", true);
    d3100->longValue(0x312A, 160).longValue(0x312B, 5270).longValue(0x312C, 3516);
    d3100->longValue(0x312D, 14);
    if (o.withTemperature)
        d3400->slong(0x3402, o.temperature);
    d3400->longValue(0x3405, o.lensType);
    d3400->rational(0x3406, o.fNumber.first, o.fNumber.second);
    d3400->slong(0x3407, 1234567).slong(0x3408, 987654);
    d3900->bytes(0x3901, Undefined, QByteArray(16, '\0'));
    return leicaMakerNote(o.order,
                          {{0x3000, d3000}, {0x3100, d3100}, {0x3400, d3400}, {0x3900, d3900}});
}

IfdPtr exifIfd(const SampleM9 &o)
{
    auto exif = Ifd::make();
    exif->rational(0x829A, o.exposureTime.first, o.exposureTime.second);
    exif->rational(0x829D, 56, 10).shortValue(0x8822, 3).shortValue(0x8827, o.iso);
    exif->bytes(0x9000, Undefined, "0220");
    exif->ascii(0x9003, o.dateTime).ascii(0x9004, o.dateTime);
    exif->srational(0x9201, 7965784, 1000000).srational(0x9203, 52, 10).srational(0x9204, -2, 3);
    exif->rational(0x9205, 1, 1).shortValue(0x9207, 2).shortValue(0x9208, 0);
    exif->shortValue(0x9209, 0)
        .rational(0x920A, o.focalLength.first, o.focalLength.second)
        .bytes(0x927C, Undefined, leicaNote(o));
    exif->bytes(0xA300, Undefined, "\x03").bytes(0xA301, Undefined, "\x01");
    exif->shortValue(0xA401, 0).shortValue(0xA402, 0).shortValue(0xA403, 0);
    exif->rational(0xA404, 0, 1).shortValue(0xA405, 50).shortValue(0xA406, 0);
    exif->ascii(0xA420, o.imageUniqueId);
    return exif;
}

IfdPtr gpsIfd()
{
    auto gps = Ifd::make();
    gps->bytes(0x0000, Byte, QByteArray("\x02\x02\x00\x00", 4)).ascii(0x0001, "N");
    gps->rationals(0x0002, {{52, 1}, {31, 1}, {1234, 100}}).ascii(0x0003, "E");
    gps->rationals(0x0004, {{13, 1}, {24, 1}, {3600, 100}});
    gps->rationals(0x0007, {{12, 1}, {32, 1}, {5, 1}});
    gps->ascii(0x0012, "WGS-84").ascii(0x001D, "2012:06:17");
    return gps;
}

namespace {

IfdPtr rawIfd(const SampleM9 &o)
{
    auto raw = Ifd::make();
    raw->longValue(0x00FE, 0).longValue(0x0100, 5216).longValue(0x0101, 3472);
    raw->shortValue(0x0102, 16).shortValue(0x0103, 1).shortValue(0x0106, 32803);
    raw->offsetTo(0x0111, QByteArray(o.rawDataBytes, '\x11'), 0x0117);
    raw->shortValue(0x0115, 1).longValue(0x0116, 3472).shortValue(0x011C, 1);
    raw->shorts(0x828D, {2, 2}).bytes(0x828E, Byte, QByteArray("\x00\x01\x01\x02", 4));
    raw->shorts(0xC619, {2, 2}).longValue(0xC61A, 0).longValue(0xC61D, 16383);
    raw->longs(0xC61F, {8, 8}).longs(0xC620, {5200, 3456});
    return raw;
}

} // namespace

IfdPtr sampleIfd0(const SampleM9 &o)
{
    const QImage preview = o.preview.isNull() ? sampleScene() : o.preview;
    const quint32 width = quint32(preview.width()), height = quint32(preview.height());
    auto ifd0 = Ifd::make();
    ifd0->longValue(0x00FE, 1).longValue(0x0100, width).longValue(0x0101, height);
    ifd0->shorts(0x0102, {8, 8, 8}).shortValue(0x0103, 1).shortValue(0x0106, 2);
    ifd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, o.model);
    ifd0->offsetTo(0x0111, packRgb(preview)).shortValue(0x0112, o.orientation);
    ifd0->shortValue(0x0115, 3);
    ifd0->longValue(0x0116, height).longValue(0x0117, width * height * 3);
    ifd0->rational(0x011A, 300, 1).rational(0x011B, 300, 1);
    ifd0->shortValue(0x011C, 1).shortValue(0x0128, 2).ascii(0x0131, "1.196");
    ifd0->ascii(0x0132, "2012:06:17 14:32:05").ascii(0x013B, "Anna Berg");
    ifd0->child(0x014A, o.rawIfd ? o.rawIfd : rawIfd(o)).child(0x8769, exifIfd(o));
    if (o.withGps)
        ifd0->child(0x8825, gpsIfd());
    ifd0->bytes(0xC612, Byte, QByteArray("\x01\x02\x00\x00", 4));
    ifd0->bytes(0xC613, Byte, QByteArray("\x01\x00\x00\x00", 4)).ascii(0xC614, o.model);
    if (o.withThumbnail) {
        auto ifd1 = Ifd::make();
        ifd1->longValue(0x00FE, 1).shortValue(0x0103, 6);
        ifd1->offsetTo(0x0201, jpegPicture(160, 120, 0x3060A0), 0x0202);
        ifd0->next(ifd1);
    }
    return ifd0;
}

QByteArray sampleM9Dng(const SampleM9 &options)
{
    return tiff(options.order, sampleIfd0(options));
}

QByteArray m9File(const Build &build, Order order)
{
    auto ifd0 = Ifd::make();
    auto exif = Ifd::make();
    ifd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    build(*ifd0, *exif);
    ifd0->child(0x8769, exif);
    return tiff(order, ifd0);
}

} // namespace fixture
