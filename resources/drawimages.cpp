// Draws the pictures compiled into the viewer: the logo plate of the header,
// the two arrows of the fold button and the application icon at the sizes the
// desktop installs. Run once by scripts/make-images; the results are kept in
// resources/images/.
//   tolvik-drawimages OUTDIR

#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
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

// The application icon: the logo's red dot on a dark rounded tile, with a white
// T in it. Drawn at each size rather than scaled, so that edges land on whole
// pixels and the 48 px icon stays sharp.
QImage appIcon(int size)
{
    const auto px = [size](qreal fraction) { return std::round(fraction * size); };
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);

    const qreal margin = px(0.0625);
    const QRectF tile(margin, margin, size - 2 * margin, size - 2 * margin);
    QLinearGradient ground(tile.topLeft(), tile.bottomLeft());
    ground.setColorAt(0, QColor(58, 58, 58));
    ground.setColorAt(1, QColor(14, 14, 14));
    p.setPen(QPen(QColor(0, 0, 0, 140), size / 48.0));
    p.setBrush(ground);
    p.drawRoundedRect(tile.adjusted(0.5, 0.5, -0.5, -0.5), px(0.17), px(0.17));
    // A faint inner rim keeps the tile apart from a dark panel.
    const qreal rim = size / 48.0;
    p.setPen(QPen(QColor(255, 255, 255, 36), rim));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(tile.adjusted(1.5 * rim, 1.5 * rim, -1.5 * rim, -1.5 * rim), px(0.15),
                      px(0.15));

    const QPointF centre(size / 2.0, size / 2.0);
    const qreal radius = px(0.3125);
    QRadialGradient dot(centre - QPointF(radius, radius) / 3, radius * 1.6);
    dot.setColorAt(0, QColor(232, 40, 52));
    dot.setColorAt(1, QColor(176, 10, 22));
    p.setPen(Qt::NoPen);
    p.setBrush(dot);
    p.drawEllipse(centre, radius, radius);

    // The T from two bars on whole pixels, so that it does not depend on a font.
    const qreal stroke = std::max<qreal>(px(0.085), 2);
    const qreal width = px(0.33), height = px(0.33);
    const qreal left = std::round((size - width) / 2), top = std::round((size - height) / 2);
    const qreal stem = std::round((size - stroke) / 2);
    p.setBrush(QColor(246, 246, 246));
    p.drawRect(QRectF(left, top, width, stroke));
    p.drawRect(QRectF(stem, top, stroke, height));
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
    ok = save(arrow(true), dir + QStringLiteral("btn_Aufklappen.png"), "png") && ok;
    ok = save(arrow(false), dir + QStringLiteral("btn_Zuklappen.png"), "png") && ok;
    for (const int size : {48, 128, 256})
        ok = save(appIcon(size), dir + QStringLiteral("tolvik-%1.png").arg(size), "png") && ok;
    return ok ? 0 : 1;
}
