// Draws the pictures compiled into the viewer: the logo plate of the header
// and the two arrows of the fold button. Run once by scripts/make-images; the
// results are kept in resources/images/.
//   tolvik-drawimages OUTDIR

#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPainterPath>
#include <cstdio>

namespace {

// Black plate, 291 x 51, the size of the header label. The right-hand part
// stays empty: camera, serial number and firmware are written over it.
QImage logoPlate()
{
    QImage image(291, 51, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);

    p.setPen(Qt::NoPen);
    p.setBrush(QColor(204, 16, 30));
    p.drawEllipse(QPointF(19.5, 24.5), 9.5, 9.5);

    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(21);
    font.setBold(true);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1.5);
    p.setFont(font);
    p.setPen(QColor(236, 236, 236));
    p.drawText(QRectF(36, 8, 100, 32), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Tolvik"));
    p.end();
    return image;
}

// A 16 x 16 chevron pair on a transparent ground, pointing right (unfold)
// or left (fold).
QImage arrow(bool pointsRight)
{
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    if (!pointsRight) {
        p.translate(16, 0);
        p.scale(-1, 1);
    }
    QPen pen(QColor(60, 60, 60), 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    for (const qreal x : {3.5, 8.5}) {
        QPainterPath chevron;
        chevron.moveTo(x, 3.5);
        chevron.lineTo(x + 4.5, 8.0);
        chevron.lineTo(x, 12.5);
        p.drawPath(chevron);
    }
    p.end();
    return image;
}

bool save(const QImage &image, const QString &path, const char *format)
{
    QImageWriter writer(path, format);
    if (!writer.write(image)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(writer.errorString()));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 2) {
        std::fprintf(stderr, "usage: tolvik-drawimages OUTDIR\n");
        return 2;
    }
    const QString dir = args[1] + QLatin1Char('/');
    bool ok = save(logoPlate(), dir + QStringLiteral("leicalogo.bmp"), "bmp");
    ok = save(arrow(true), dir + QStringLiteral("btn_Aufklappen.tiff"), "tiff") && ok;
    ok = save(arrow(false), dir + QStringLiteral("btn_Zuklappen.tiff"), "tiff") && ok;
    return ok ? 0 : 1;
}
