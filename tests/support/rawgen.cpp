#include "tests/support/rawgen.h"

#include "tests/support/samplem9.h"

#include <QFile>
#include <QPainter>
#include <QSaveFile>

#include <cmath>

namespace fixture {

namespace {

// ---------------------------------------------------------------------------
// 3 x 3 matrices in row order.

using M3 = std::array<double, 9>;
using V3 = std::array<double, 3>;

M3 mul(const M3 &a, const M3 &b)
{
    M3 r{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                r[i * 3 + j] += a[i * 3 + k] * b[k * 3 + j];
    return r;
}

V3 times(const M3 &m, const V3 &v)
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

M3 inverse(const M3 &m)
{
    const double a = m[4] * m[8] - m[5] * m[7], b = m[5] * m[6] - m[3] * m[8],
                 c = m[3] * m[7] - m[4] * m[6];
    const double det = m[0] * a + m[1] * b + m[2] * c;
    return {a / det, (m[2] * m[7] - m[1] * m[8]) / det, (m[1] * m[5] - m[2] * m[4]) / det,
            b / det, (m[0] * m[8] - m[2] * m[6]) / det, (m[2] * m[3] - m[0] * m[5]) / det,
            c / det, (m[1] * m[6] - m[0] * m[7]) / det, (m[0] * m[4] - m[1] * m[3]) / det};
}

M3 scaled(M3 m, double s)
{
    for (double &v : m)
        v *= s;
    return m;
}

M3 diagonal(const V3 &d)
{
    return {d[0], 0, 0, 0, d[1], 0, 0, 0, d[2]};
}

V3 xyToXyz(double x, double y)
{
    return {x / y, 1, (1 - x - y) / y};
}

// Bradford's cone response and the adaptation from one white to another.
constexpr M3 kBradford{0.8951, 0.2664, -0.1614, -0.7502, 1.7135, 0.0367, 0.0389, -0.0685, 1.0296};

M3 adaptation(const V3 &from, const V3 &to)
{
    const V3 a = times(kBradford, from), b = times(kBradford, to);
    return mul(inverse(kBradford),
               mul(diagonal({b[0] / a[0], b[1] / a[1], b[2] / a[2]}), kBradford));
}

const V3 kD50 = xyToXyz(0.3457, 0.3585);
const V3 kD65 = xyToXyz(0.3127, 0.3290);

// Linear sRGB (D65) and XYZ.
constexpr M3 kSrgbToXyz{0.4124, 0.3576, 0.1805, 0.2126, 0.7152, 0.0722, 0.0193, 0.1192, 0.9505};

double srgbDecode(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double srgbEncode(double v)
{
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

// Robertson's isotemperature lines: reciprocal megakelvin, u, v, slope.
constexpr double kRobertson[][4] = {
    {0, 0.18006, 0.26352, -0.24341},   {10, 0.18066, 0.26589, -0.25479},
    {20, 0.18133, 0.26846, -0.26876},  {30, 0.18208, 0.27119, -0.28539},
    {40, 0.18293, 0.27407, -0.30470},  {50, 0.18388, 0.27709, -0.32675},
    {60, 0.18494, 0.28021, -0.35156},  {70, 0.18611, 0.28342, -0.37915},
    {80, 0.18740, 0.28668, -0.40955},  {90, 0.18880, 0.28997, -0.44278},
    {100, 0.19032, 0.29326, -0.47888}, {125, 0.19462, 0.30141, -0.58204},
    {150, 0.19962, 0.30921, -0.70471}, {175, 0.20525, 0.31647, -0.84901},
    {200, 0.21142, 0.32312, -1.0182},  {225, 0.21807, 0.32909, -1.2168},
    {250, 0.22511, 0.33439, -1.4512},  {275, 0.23247, 0.33904, -1.7298},
    {300, 0.24010, 0.34308, -2.0637},  {325, 0.24792, 0.34655, -2.4681},
    {350, 0.25591, 0.34951, -2.9641},  {375, 0.26400, 0.35200, -3.5814},
    {400, 0.27218, 0.35407, -4.3633},  {425, 0.28039, 0.35577, -5.3762},
    {450, 0.28863, 0.35714, -6.7262},  {475, 0.29685, 0.35823, -8.5955},
    {500, 0.30505, 0.35907, -11.324},  {525, 0.31320, 0.35968, -15.628},
    {550, 0.32129, 0.36011, -23.325},  {575, 0.32931, 0.36038, -40.770},
    {600, 0.33724, 0.36051, -116.45},
};

double temperature(double x, double y)
{
    const double d = -2 * x + 12 * y + 3;
    const double u = 4 * x / d, v = 6 * y / d;
    double last = 0;
    for (std::size_t i = 0; i < std::size(kRobertson); ++i) {
        const double *r = kRobertson[i];
        const double dist = ((v - r[2]) - r[3] * (u - r[1])) / std::sqrt(1 + r[3] * r[3]);
        if (i > 0 && (dist <= 0) != (last <= 0)) {
            const double *p = kRobertson[i - 1];
            const double mired = p[0] + (r[0] - p[0]) * last / (last - dist);
            return mired > 0 ? 1e6 / mired : 1e6;
        }
        last = dist;
    }
    return 1e6 / 600;
}

// ColorMatrix1 (StdA) and ColorMatrix2 (D65), XYZ to camera. The D65 one
// is the published M9 matrix; the StdA one is a plausible companion.
constexpr M3 kColorMatrixA{0.7295, -0.2467, -0.0447, -0.3895, 1.1695,
                           0.2302, -0.0914, 0.2127,  0.6452};
constexpr M3 kColorMatrixD65{0.6687, -0.1751, -0.0291, -0.3556, 1.1373,
                             0.2492, -0.0548, 0.2204,  0.7146};
constexpr double kTemperatureA = 2856, kTemperatureD65 = 6504;

M3 interpolated(const M3 &a, const M3 &d65, double x, double y)
{
    const double t = temperature(x, y);
    const double g = std::clamp(
        (1 / t - 1 / kTemperatureD65) / (1 / kTemperatureA - 1 / kTemperatureD65), 0.0, 1.0);
    M3 m{};
    for (int i = 0; i < 9; ++i)
        m[i] = g * a[i] + (1 - g) * d65[i];
    return m;
}

// The camera-to-PCS matrix for the white AsShotNeutral gives.
M3 cameraToPcs(const M3 &a, const M3 &d65, const V3 &neutral)
{
    double x = 0.3457, y = 0.3585;
    M3 toCamera{};
    for (int i = 0; i < 50; ++i) {
        toCamera = interpolated(a, d65, x, y);
        const V3 xyz = times(inverse(toCamera), neutral);
        const double sum = xyz[0] + xyz[1] + xyz[2];
        const double nx = xyz[0] / sum, ny = xyz[1] / sum;
        const bool done = std::abs(nx - x) + std::abs(ny - y) < 1e-10;
        x = nx;
        y = ny;
        if (done)
            break;
    }
    toCamera = interpolated(a, d65, x, y);
    M3 pcsToCamera = mul(toCamera, adaptation(kD50, xyToXyz(x, y)));
    const V3 white = times(pcsToCamera, kD50);
    pcsToCamera = scaled(pcsToCamera, 1 / std::max({white[0], white[1], white[2]}));
    return inverse(pcsToCamera);
}

double rounded(double v, double unit)
{
    return std::round(v / unit) * unit;
}

// ---------------------------------------------------------------------------
// Lossless JPEG writing (predictor 1, one Huffman table).

struct Code {
    quint16 bits = 0;
    int length = 0;
};

int category(int diff)
{
    int magnitude = std::abs(diff), s = 0;
    while (magnitude) {
        ++s;
        magnitude >>= 1;
    }
    return std::min(s, 16);
}

// The difference of a sample from its prediction, modulo 2^16, in -32767..32768.
int wrapped(int diff)
{
    diff &= 0xFFFF;
    return diff > 32768 ? diff - 65536 : diff;
}

// Code lengths from symbol counts, at most 16 bits (ITU T.81 K.2 and K.3).
void huffmanTable(std::array<qint64, 17> counts, std::array<int, 17> &bits, QByteArray &values,
                  std::array<Code, 17> &codes)
{
    std::array<qint64, 18> freq{};
    std::copy(counts.begin(), counts.end(), freq.begin());
    freq[17] = 1; // reserves the code of all ones
    std::array<int, 18> size{}, others;
    others.fill(-1);
    for (;;) {
        int v1 = -1, v2 = -1;
        for (int i = 0; i < 18; ++i) {
            if (freq[i] && (v1 < 0 || freq[i] <= freq[v1]))
                v1 = i;
        }
        for (int i = 0; i < 18; ++i) {
            if (freq[i] && i != v1 && (v2 < 0 || freq[i] <= freq[v2]))
                v2 = i;
        }
        if (v2 < 0)
            break;
        freq[v1] += freq[v2];
        freq[v2] = 0;
        for (++size[v1]; others[v1] >= 0; ++size[v1])
            v1 = others[v1];
        others[v1] = v2;
        for (++size[v2]; others[v2] >= 0; ++size[v2])
            v2 = others[v2];
    }
    std::array<int, 40> count{};
    for (int s : size) {
        if (s)
            ++count[s];
    }
    for (int i = 39; i > 16; --i) {
        while (count[i] > 0) {
            int j = i - 2;
            while (count[j] == 0)
                --j;
            count[i] -= 2;
            count[i - 1] += 1;
            count[j + 1] += 2;
            count[j] -= 1;
        }
    }
    int longest = 16;
    while (count[longest] == 0)
        --longest;
    --count[longest]; // the reserved code
    values.clear();
    for (int len = 1; len <= 32; ++len) {
        for (int sym = 0; sym < 17; ++sym) {
            if (size[sym] == len)
                values.append(char(sym));
        }
    }
    quint32 code = 0;
    int k = 0;
    for (int len = 1; len <= 16; ++len) {
        bits[len] = count[len];
        for (int i = 0; i < count[len]; ++i, ++code, ++k)
            codes[uchar(values[k])] = {quint16(code), len};
        code <<= 1;
    }
    values.truncate(k);
}

class BitWriter {
public:
    QByteArray out;
    void put(quint32 bits, int length)
    {
        m_acc = m_acc << length | (bits & ((1u << length) - 1));
        m_have += length;
        while (m_have >= 8) {
            m_have -= 8;
            const char byte = char((m_acc >> m_have) & 0xFF);
            out.append(byte);
            if (uchar(byte) == 0xFF)
                out.append('\0');
        }
    }
    void finish()
    {
        if (m_have)
            put(0x7F, 8 - m_have);
    }

private:
    quint64 m_acc = 0;
    int m_have = 0;
};

// Square tiles, each a lossless JPEG of `components` interleaved components
// (tile / components wide, tile high) with the predictor given; samples
// beyond the picture repeat its last column and row.
QList<QByteArray> losslessJpegTiles(const std::vector<quint16> &v, int width, int height, int tile,
                                    int predictor, int components, int pointTransform)
{
    const int across = (width + tile - 1) / tile, down = (height + tile - 1) / tile;
    const int nc = components;
    const auto sample = [&](int tx, int ty, int x, int y) {
        const int sx = std::min(tx * tile + x, width - 1), sy = std::min(ty * tile + y, height - 1);
        return int(v[std::size_t(sy) * std::size_t(width) + std::size_t(sx)]) >> pointTransform;
    };
    // The differences of one tile in order (ITU T.81 H.1.2.1).
    const auto differences = [&](int tx, int ty, const auto &use) {
        for (int y = 0; y < tile; ++y) {
            for (int x = 0; x < tile; ++x) {
                int predicted = 1 << (15 - pointTransform);
                if (y == 0 && x >= nc) {
                    predicted = sample(tx, ty, x - nc, y);
                } else if (y > 0 && x < nc) {
                    predicted = sample(tx, ty, x, y - 1);
                } else if (y > 0) {
                    const int a = sample(tx, ty, x - nc, y), b = sample(tx, ty, x, y - 1),
                              c = sample(tx, ty, x - nc, y - 1);
                    const int p[] = {
                        a, b, c, a + b - c, a + ((b - c) >> 1), b + ((a - c) >> 1), (a + b) >> 1};
                    predicted = p[predictor - 1];
                }
                use(wrapped(sample(tx, ty, x, y) - predicted));
            }
        }
    };
    std::array<qint64, 17> counts{};
    for (int t = 0; t < across * down; ++t)
        differences(t % across, t / across, [&](int d) { ++counts[std::size_t(category(d))]; });
    std::array<int, 17> bits{};
    QByteArray values;
    std::array<Code, 17> codes{};
    huffmanTable(counts, bits, values, codes);

    QByteArray header("\xFF\xD8\xFF\xC4", 4);
    header.append(char(0)).append(char(3 + 16 + values.size())).append(char(0));
    for (int len = 1; len <= 16; ++len)
        header.append(char(bits[std::size_t(len)]));
    header.append(values);
    header.append("\xFF\xC3\x00", 3).append(char(8 + 3 * nc)).append(char(16));
    header.append(char(tile >> 8)).append(char(tile & 0xFF));               // Y
    header.append(char((tile / nc) >> 8)).append(char((tile / nc) & 0xFF)); // X
    header.append(char(nc));
    for (int k = 1; k <= nc; ++k)
        header.append(char(k)).append(char(0x11)).append(char(0));
    header.append("\xFF\xDA\x00", 3).append(char(6 + 2 * nc)).append(char(nc));
    for (int k = 1; k <= nc; ++k)
        header.append(char(k)).append(char(0));
    header.append(char(predictor)).append(char(0)).append(char(pointTransform));

    QList<QByteArray> tiles;
    for (int t = 0; t < across * down; ++t) {
        BitWriter w;
        w.out = header;
        differences(t % across, t / across, [&](int d) {
            const int s = category(d);
            w.put(codes[std::size_t(s)].bits, codes[std::size_t(s)].length);
            if (s && s < 16)
                w.put(quint32(d < 0 ? d + (1 << s) - 1 : d), s);
        });
        w.finish();
        w.out.append("\xFF\xD9", 2);
        tiles.append(w.out);
    }
    return tiles;
}

// Rows of 16-bit samples, or packed MSB first, each row padded to a byte.
QByteArray packRows(const quint16 *v, int width, int rows, std::size_t stride, int bits,
                    Order order)
{
    QByteArray out;
    out.reserve(qsizetype((qint64(width) * bits + 7) / 8 * rows));
    for (int y = 0; y < rows; ++y) {
        const quint16 *row = v + std::size_t(y) * stride;
        if (bits == 16) {
            for (int x = 0; x < width; ++x) {
                const char hi = char(row[x] >> 8), lo = char(row[x] & 0xFF);
                order == Order::Big ? out.append(hi).append(lo) : out.append(lo).append(hi);
            }
            continue;
        }
        quint32 acc = 0;
        int have = 0;
        for (int x = 0; x < width; ++x) {
            acc = acc << bits | row[x];
            have += bits;
            while (have >= 8) {
                have -= 8;
                out.append(char((acc >> have) & 0xFF));
            }
        }
        if (have)
            out.append(char((acc << (8 - have)) & 0xFF));
    }
    return out;
}

QList<std::pair<qint32, qint32>> fractions(const double *v, int n, int denominator)
{
    QList<std::pair<qint32, qint32>> out;
    for (int i = 0; i < n; ++i)
        out.append({qint32(std::lround(v[i] * denominator)), denominator});
    return out;
}

} // namespace

const char *storageName(RawStorage storage)
{
    switch (storage) {
    case RawStorage::Uncompressed16: return "uncompressed16";
    case RawStorage::Linearized8: return "linearized8";
    case RawStorage::Packed12: return "packed12";
    case RawStorage::Packed14: return "packed14";
    case RawStorage::LosslessJpeg: return "losslessjpeg";
    case RawStorage::TiledUncompressed16: return "tiled16";
    }
    return "";
}

QImage rawPhoto()
{
    static const QImage photo = [] {
        QImage image(QStringLiteral("/usr/share/backgrounds/mate/nature/Garden.jpg"));
        return image.isNull() ? sampleScene() : image.convertToFormat(QImage::Format_RGB888);
    }();
    return photo;
}

void drawCharts(QImage &image, const QRect &area)
{
    QPainter p(&image);
    p.fillRect(area, QColor(128, 128, 128));
    const int cw = area.width() / 2, ch = area.height() / 2;
    const QRect star(area.x(), area.y(), cw, ch), zone(area.x() + cw, area.y(), cw, ch);
    const QRect bars(area.x(), area.y() + ch, cw, ch),
        patches(area.x() + cw, area.y() + ch, cw, ch);

    // Siemens star: 36 black spokes on white.
    p.setRenderHint(QPainter::Antialiasing);
    const int r = std::min(cw, ch) * 9 / 20;
    const QRect disc(star.center().x() - r, star.center().y() - r, 2 * r, 2 * r);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawEllipse(disc);
    p.setBrush(Qt::black);
    for (int i = 0; i < 36; ++i)
        p.drawPie(disc, i * 10 * 16, 5 * 16);
    p.end();

    // Zone plate: a circular chirp reaching half a cycle per pixel at its edge.
    const int zr = std::min(cw, ch) * 9 / 20;
    const double k = M_PI / (2.0 * zr);
    for (int y = -zr; y < zr; ++y) {
        uchar *line = image.scanLine(zone.center().y() + y);
        for (int x = -zr; x < zr; ++x) {
            const double d2 = double(x) * x + double(y) * y;
            if (d2 >= double(zr) * zr)
                continue;
            const uchar g = uchar(std::lround(127.5 + 127.5 * std::cos(k * d2)));
            uchar *px = line + (zone.center().x() + x) * 3;
            px[0] = px[1] = px[2] = g;
        }
    }

    // Line pairs: vertical bars above, horizontal below, periods 2 to 12 pixels.
    QPainter q(&image);
    const int groups = 6, gw = bars.width() / groups;
    for (int g = 0; g < groups; ++g) {
        const int period = 2 + 2 * g;
        const QRect top(bars.x() + g * gw, bars.y(), gw - 4, bars.height() / 2 - 4);
        const QRect bottom(bars.x() + g * gw, bars.y() + bars.height() / 2, gw - 4,
                           bars.height() / 2 - 4);
        q.fillRect(top, Qt::white);
        q.fillRect(bottom, Qt::white);
        for (int x = 0; x < top.width(); x += period)
            q.fillRect(top.x() + x, top.y(), period / 2, top.height(), Qt::black);
        for (int y = 0; y < bottom.height(); y += period)
            q.fillRect(bottom.x(), bottom.y() + y, bottom.width(), period / 2, Qt::black);
    }

    // Colour patches: primaries, secondaries, skin, foliage, sky and a grey ramp.
    static constexpr quint32 kPatches[24] = {
        0x733F2F, 0xC2957E, 0x5E7A9C, 0x5A6B41, 0x8280B0, 0x67BDAA, 0xD67E2C, 0x4A5BA8,
        0xC15A63, 0x5E3C6C, 0x9DBC40, 0xE0A32E, 0x383D96, 0x469449, 0xAF363C, 0xE7C71F,
        0xBB5695, 0x0885A1, 0xF3F3F2, 0xC8C8C8, 0xA0A0A0, 0x7A7A79, 0x555555, 0x343434};
    const int pw = patches.width() / 6, ph = patches.height() / 4;
    for (int i = 0; i < 24; ++i)
        q.fillRect(patches.x() + (i % 6) * pw + 2, patches.y() + (i / 6) * ph + 2, pw - 4, ph - 4,
                   QColor::fromRgb(kPatches[i]));
}

RawGenerator::RawGenerator(const RawOptions &options) : m_o(options)
{
    const int aw = std::max(8, m_o.width - 26 - 28), ah = std::max(8, m_o.height - 20 - 20);
    m_active = QRect(26, 20, aw, ah);
    m_crop = QRect(2, 2, aw - 4, ah - 4);

    double blackScale = 1;
    switch (m_o.storage) {
    case RawStorage::Linearized8:
        m_bits = 8;
        for (int k = 0; k < 256; ++k)
            m_table.push_back(quint16(std::lround(16383.0 * k * k / (255.0 * 255.0))));
        m_code.resize(16384);
        for (int v = 0, k = 0; v < 16384; ++v) {
            while (k < 255 && std::abs(m_table[std::size_t(k + 1)] - v) <=
                                  std::abs(m_table[std::size_t(k)] - v))
                ++k;
            m_code[std::size_t(v)] = quint8(k);
        }
        break;
    case RawStorage::Packed12:
        m_bits = 12;
        m_white = 4095;
        blackScale = 0.25;
        break;
    case RawStorage::Packed14: m_bits = 14; break;
    default: m_bits = 16; break;
    }
    for (int i = 0; i < 4; ++i)
        m_black[std::size_t(i)] = rounded(
            (m_o.blackPattern ? m_o.black[std::size_t(i)] : m_o.black[0]) * blackScale, 0.01);
    if (m_o.blackDeltas) {
        for (int x = 0; x < aw; ++x)
            m_deltaH.push_back(float(rounded(2.0 * std::sin(x * 0.01), 0.01)));
        for (int y = 0; y < ah; ++y)
            m_deltaV.push_back(float(rounded(1.5 * std::cos(y * 0.013), 0.01)));
    }

    // The colour, with the values as the file holds them.
    for (int i = 0; i < 9; ++i) {
        m_cm1[std::size_t(i)] = rounded(kColorMatrixA[std::size_t(i)], 1e-4);
        m_cm2[std::size_t(i)] = rounded(kColorMatrixD65[std::size_t(i)], 1e-4);
    }
    const double dx = 0.3324, dy = 0.3474; // D55, a sunny afternoon
    const V3 n = times(interpolated(m_cm1, m_cm2, dx, dy), xyToXyz(dx, dy));
    for (int c = 0; c < 3; ++c)
        m_neutral[std::size_t(c)] = rounded(n[std::size_t(c)] / n[1], 1e-6);
    const double exposure = std::exp2(rounded(m_o.baselineExposure, 0.01));
    const M3 pcsToSrgb = mul(inverse(kSrgbToXyz), adaptation(kD50, kD65));
    if (m_o.monochrom) {
        const M3 grey{0.2126, 0.7152, 0.0722, 0.2126, 0.7152, 0.0722, 0.2126, 0.7152, 0.0722};
        m_srgbToCamera = scaled(grey, std::exp2(m_o.exposureStops) / exposure);
        m_cameraToSrgb = diagonal({exposure, exposure, exposure});
    } else {
        const M3 toPcs = cameraToPcs(m_cm1, m_cm2, m_neutral);
        m_cameraToSrgb = scaled(mul(pcsToSrgb, toPcs), exposure);
        m_srgbToCamera = mul(diagonal(m_o.channelGain),
                             scaled(inverse(m_cameraToSrgb), std::exp2(m_o.exposureStops)));
    }
    for (int i = 0; i < 256; ++i)
        m_linear[std::size_t(i)] = srgbDecode(i / 255.0);

    // The scene over the active area: the photograph cut to its shape
    // (another part for each frame), with or without the charts.
    const QImage photo = rawPhoto();
    QRectF part(0, 0, photo.width(), photo.height());
    const double aspect = double(aw) / ah;
    if (part.width() / part.height() > aspect)
        part.setWidth(part.height() * aspect);
    else
        part.setHeight(part.width() / aspect);
    if (m_o.frame) {
        const double f = std::clamp(m_o.framePart, 0.05, 1.0);
        const QSizeF size = part.size() * f;
        const double ox = std::fmod(m_o.frame * 0.37, 1.0) * (photo.width() - size.width());
        const double oy = std::fmod(m_o.frame * 0.61, 1.0) * (photo.height() - size.height());
        part = QRectF(QPointF(ox, oy), size);
    }
    m_scene = photo.copy(part.toRect())
                  .scaled(aw, ah, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                  .convertToFormat(QImage::Format_RGB888);
    if (m_o.scene == RawScene::Charts)
        drawCharts(m_scene, m_scene.rect());
    else if (m_o.scene == RawScene::PhotoWithCharts)
        drawCharts(m_scene, QRect(aw / 2, ah / 2, aw - aw / 2, ah - ah / 2));
}

double RawGenerator::blackAt(int x, int y) const
{
    const int ax = x - m_active.x(), ay = y - m_active.y();
    double black = m_black[std::size_t(((ay & 1) * 2 + (ax & 1)))];
    if (ax >= 0 && ax < int(m_deltaH.size()))
        black += double(m_deltaH[std::size_t(ax)]);
    if (ay >= 0 && ay < int(m_deltaV.size()))
        black += double(m_deltaV[std::size_t(ay)]);
    return black;
}

quint16 RawGenerator::quantize(double linear) const
{
    const int v = int(std::clamp(std::lround(linear), 0L, long(m_white)));
    return m_table.empty() ? quint16(v) : m_table[m_code[std::size_t(v)]];
}

RawGenerator::Pixel RawGenerator::pixel(int ax, int ay) const
{
    const uchar *s = m_scene.constScanLine(ay) + ax * 3;
    const V3 linear{m_linear[s[0]], m_linear[s[1]], m_linear[s[2]]};
    const V3 camera = times(m_srgbToCamera, linear);
    const double black = blackAt(ax + m_active.x(), ay + m_active.y());
    Pixel p;
    for (int c = 0; c < 3; ++c)
        p.raw[std::size_t(c)] = quantize(
            std::max(black + std::clamp(camera[std::size_t(c)], 0.0, 1.0) * (m_white - black),
                     std::ceil(black)));
    return p;
}

std::array<double, 3> RawGenerator::developLinear(const Pixel &p, int x, int y) const
{
    const double black = blackAt(x, y);
    V3 n;
    for (int c = 0; c < 3; ++c)
        n[std::size_t(c)] = std::clamp(
            (p.raw[std::size_t(m_o.monochrom ? 0 : c)] - black) / (m_white - black), 0.0, 1.0);
    V3 rgb = times(m_cameraToSrgb, n);
    for (double &v : rgb)
        v = std::clamp(v, 0.0, 1.0);
    return rgb;
}

QImage RawGenerator::truth(bool sixteenBit) const
{
    QImage out(m_crop.size(), sixteenBit ? QImage::Format_RGBX64 : QImage::Format_RGB888);
    for (int y = 0; y < out.height(); ++y) {
        uchar *line8 = out.scanLine(y);
        auto *line16 = reinterpret_cast<quint16 *>(line8);
        for (int x = 0; x < out.width(); ++x) {
            const int ax = m_crop.x() + x, ay = m_crop.y() + y;
            const V3 rgb = developLinear(pixel(ax, ay), ax + m_active.x(), ay + m_active.y());
            for (int c = 0; c < 3; ++c) {
                const double e = srgbEncode(rgb[std::size_t(c)]);
                if (sixteenBit)
                    line16[x * 4 + c] = quint16(std::lround(e * 65535));
                else
                    line8[x * 3 + c] = uchar(std::lround(e * 255));
            }
            if (sixteenBit)
                line16[x * 4 + 3] = 0xFFFF;
        }
    }
    return out;
}

QImage RawGenerator::truthHalf() const
{
    QImage out(m_crop.width() / 2, m_crop.height() / 2, QImage::Format_RGBX64);
    for (int y = 0; y < out.height(); ++y) {
        auto *line = reinterpret_cast<quint16 *>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            V3 sum{};
            for (int k = 0; k < 4; ++k) {
                const int ax = m_crop.x() + 2 * x + (k & 1), ay = m_crop.y() + 2 * y + (k >> 1);
                const V3 rgb = developLinear(pixel(ax, ay), ax + m_active.x(), ay + m_active.y());
                for (int c = 0; c < 3; ++c)
                    sum[std::size_t(c)] += rgb[std::size_t(c)] / 4;
            }
            for (int c = 0; c < 3; ++c)
                line[x * 4 + c] = quint16(std::lround(srgbEncode(sum[std::size_t(c)]) * 65535));
            line[x * 4 + 3] = 0xFFFF;
        }
    }
    return out;
}

QByteArray RawGenerator::dng() const
{
    const int w = m_o.width, h = m_o.height;
    std::vector<quint16> v(std::size_t(w) * std::size_t(h));
    static constexpr int kRggb[4] = {0, 1, 1, 2};
    for (int y = 0; y < h; ++y) {
        quint16 *row = v.data() + std::size_t(y) * std::size_t(w);
        for (int x = 0; x < w; ++x) {
            if (m_active.contains(x, y)) {
                const Pixel p = pixel(x - m_active.x(), y - m_active.y());
                row[x] = p.raw[std::size_t(m_o.monochrom ? 0 : kRggb[(y & 1) * 2 + (x & 1)])];
            } else {
                row[x] = quantize(m_black[std::size_t(
                    (((y - m_active.y()) & 1) * 2 + ((x - m_active.x()) & 1)))]);
            }
        }
    }
    // Spots and faults, on the sensor only.
    for (const Spot &s : m_o.spots) {
        const double reach = s.halo > 0 ? 1.6 * s.radius : s.radius;
        const QRect box = QRectF(s.at.x() - reach, s.at.y() - reach, 2 * reach, 2 * reach)
                              .toAlignedRect()
                              .intersected(m_active);
        for (int y = box.top(); y <= box.bottom(); ++y) {
            for (int x = box.left(); x <= box.right(); ++x) {
                const double d = std::hypot(x - s.at.x(), y - s.at.y()) / s.radius;
                double change = 0;
                if (d < 1)
                    change = s.contrast * 0.5 * (1 + std::cos(M_PI * d));
                else if (d < 1.6)
                    change = s.halo * std::pow(std::sin(M_PI * (d - 1) / 0.6), 2);
                else
                    continue;
                quint16 &value = v[std::size_t(y) * std::size_t(w) + std::size_t(x)];
                const double black = blackAt(x, y);
                value = quantize(black + (value - black) * (1 + change));
            }
        }
    }
    for (const PixelDefect &d : m_o.defects) {
        if (d.at.x() < 0 || d.at.y() < 0 || d.at.x() >= w || d.at.y() >= h)
            continue;
        quint16 &value = v[std::size_t(d.at.y()) * std::size_t(w) + std::size_t(d.at.x())];
        const double scale = m_white / 16383.0;
        value = d.kind == PixelDefect::Hot    ? quantize(value + d.value * scale)
                : d.kind == PixelDefect::Dead ? quantize(blackAt(d.at.x(), d.at.y()))
                                              : quint16(m_white);
    }
    if (!m_table.empty()) {
        for (quint16 &value : v)
            value = m_code[value];
    }

    auto raw = Ifd::make();
    const bool tiled =
        m_o.storage == RawStorage::LosslessJpeg || m_o.storage == RawStorage::TiledUncompressed16;
    const bool jpeg = m_o.storage == RawStorage::LosslessJpeg;
    raw->longValue(0x00FE, 0).longValue(0x0100, quint32(w)).longValue(0x0101, quint32(h));
    raw->shortValue(0x0102, quint16(m_bits)).shortValue(0x0103, jpeg ? 7 : 1);
    raw->shortValue(0x0106, m_o.monochrom ? 34892 : 32803);
    const int tile = std::max(16, m_o.tileSize / 16 * 16);
    if (tiled) {
        raw->shortValue(0x0115, 1).shortValue(0x011C, 1);
        raw->longValue(0x0142, tile).longValue(0x0143, tile);
        QList<QByteArray> tiles;
        if (jpeg) {
            tiles = losslessJpegTiles(
                v, w, h, tile, std::clamp(m_o.jpegPredictor, 1, 7),
                m_o.jpegComponents == 1 || m_o.jpegComponents == 4 ? m_o.jpegComponents : 2,
                std::clamp(m_o.jpegPointTransform, 0, 8));
        } else {
            for (int ty = 0; ty < h; ty += tile) {
                for (int tx = 0; tx < w; tx += tile) {
                    // Full tiles, the last column and row repeated beyond the picture.
                    std::vector<quint16> block(std::size_t(tile) * tile);
                    for (int y = 0; y < tile; ++y)
                        for (int x = 0; x < tile; ++x)
                            block[std::size_t(y * tile + x)] =
                                v[std::size_t(std::min(ty + y, h - 1)) * std::size_t(w) +
                                  std::size_t(std::min(tx + x, w - 1))];
                    tiles.append(
                        packRows(block.data(), tile, tile, std::size_t(tile), 16, m_o.order));
                }
            }
        }
        raw->offsetsTo(0x0144, tiles, 0x0145);
    } else {
        const int rows = m_o.rowsPerStrip > 0 ? std::min(m_o.rowsPerStrip, h) : h;
        QList<QByteArray> strips;
        for (int y = 0; y < h; y += rows)
            strips.append(packRows(v.data() + std::size_t(y) * std::size_t(w), w,
                                   std::min(rows, h - y), std::size_t(w), m_bits, m_o.order));
        QList<quint32> sizes;
        for (const QByteArray &strip : strips)
            sizes << quint32(strip.size());
        raw->offsetsTo(0x0111, strips).shortValue(0x0115, 1).longValue(0x0116, quint32(rows));
        raw->longs(0x0117, sizes).shortValue(0x011C, 1);
    }
    if (!m_o.monochrom)
        raw->shorts(0x828D, {2, 2}).bytes(0x828E, Byte, QByteArray("\x00\x01\x01\x02", 4));
    if (!m_table.empty())
        raw->shorts(0xC618, QList<quint16>(m_table.begin(), m_table.end()));
    if (m_o.blackPattern) {
        raw->shorts(0xC619, {2, 2});
        Fractions black;
        for (double b : m_black)
            black.append({quint32(std::lround(b * 100)), 100});
        raw->rationals(0xC61A, black);
    } else {
        raw->rational(0xC61A, quint32(std::lround(m_black[0] * 100)), 100);
    }
    if (m_o.blackDeltas) {
        std::vector<double> dh(m_deltaH.begin(), m_deltaH.end()),
            dv(m_deltaV.begin(), m_deltaV.end());
        raw->srationals(0xC61B, fractions(dh.data(), int(dh.size()), 100));
        raw->srationals(0xC61C, fractions(dv.data(), int(dv.size()), 100));
    }
    raw->longValue(0xC61D, m_white);
    raw->longs(0xC61F, {quint32(m_crop.x()), quint32(m_crop.y())});
    raw->longs(0xC620, {quint32(m_crop.width()), quint32(m_crop.height())});
    raw->longs(0xC68D, {quint32(m_active.top()), quint32(m_active.left()),
                        quint32(m_active.bottom() + 1), quint32(m_active.right() + 1)});

    SampleM9 sample = m_o.sample;
    sample.order = m_o.order;
    sample.model = m_o.monochrom ? "M Monochrom" : "M9 Digital Camera";
    sample.rawIfd = raw;
    sample.orientation = m_o.orientation;
    QImage preview(320, 240, QImage::Format_RGB888);
    preview.fill(Qt::black);
    QPainter(&preview).drawImage(QRect(0, 13, 320, 213), m_scene);
    sample.preview = preview;
    IfdPtr ifd0 = Ifd::make();
    if (m_o.bareIfd0) {
        ifd0->longValue(0x00FE, 1).ascii(0x010F, "Leica Camera AG").ascii(0x0110, sample.model);
        ifd0->child(0x014A, raw);
    } else {
        ifd0 = sampleIfd0(sample);
    }
    if (!m_o.monochrom) {
        ifd0->srationals(0xC621, fractions(m_cm1.data(), 9, 10000));
        ifd0->srationals(0xC622, fractions(m_cm2.data(), 9, 10000));
        Fractions neutral;
        for (double n : m_neutral)
            neutral.append({quint32(std::lround(n * 1e6)), 1000000});
        ifd0->rationals(0xC628, neutral);
    }
    ifd0->srational(0xC62A, qint32(std::lround(m_o.baselineExposure * 100)), 100);
    if (!m_o.monochrom)
        ifd0->shortValue(0xC65A, 17).shortValue(0xC65B, 21);
    return tiff(m_o.order, ifd0);
}

bool writeRawDng(const QString &path, const RawOptions &options)
{
    QSaveFile file(path);
    const QByteArray bytes = RawGenerator(options).dng();
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

} // namespace fixture
