#include "raw/decode.h"

#include "raw/rawlimits.h"
#include "rawfile/tcodetable.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>

namespace raw {

namespace {

// What ends a decode: thrown where a check fails, caught once at the top.
struct TFailure {
    QString text;
};

[[noreturn]] void fail(const QString &text)
{
    throw TFailure{text};
}

// Compression values a DNG may state; only 1 and 7 are read.
constexpr TCodeText kCompressions[] = {
    {2, "CCITT Group 3"},  {5, "LZW"},
    {6, "old-style JPEG"}, {8, "Deflate"},
    {32773, "PackBits"},   {32946, "Deflate"},
    {34892, "lossy JPEG"}, {34713, "Nikon NEF compressed"},
    {52546, "JPEG XL"},
};

// Tags of the directories read here.
enum Tag : quint16 {
    NewSubFileType = 0x00FE,
    ImageWidth = 0x0100,
    ImageLength = 0x0101,
    BitsPerSample = 0x0102,
    Compression = 0x0103,
    Photometric = 0x0106,
    Model = 0x0110,
    StripOffsets = 0x0111,
    Orientation = 0x0112,
    SamplesPerPixel = 0x0115,
    RowsPerStrip = 0x0116,
    StripByteCounts = 0x0117,
    PlanarConfiguration = 0x011C,
    TileWidth = 0x0142,
    TileLength = 0x0143,
    TileOffsets = 0x0144,
    TileByteCounts = 0x0145,
    SubIfds = 0x014A,
    CfaRepeatPatternDim = 0x828D,
    CfaPattern = 0x828E,
    CfaPlaneColor = 0xC616,
    CfaLayout = 0xC617,
    LinearizationTable = 0xC618,
    BlackLevelRepeatDim = 0xC619,
    BlackLevel = 0xC61A,
    BlackLevelDeltaH = 0xC61B,
    BlackLevelDeltaV = 0xC61C,
    WhiteLevel = 0xC61D,
    DefaultCropOrigin = 0xC61F,
    DefaultCropSize = 0xC620,
    ColorMatrix1 = 0xC621,
    ColorMatrix2 = 0xC622,
    CameraCalibration1 = 0xC623,
    CameraCalibration2 = 0xC624,
    AnalogBalance = 0xC627,
    AsShotNeutral = 0xC628,
    AsShotWhiteXY = 0xC629,
    BaselineExposure = 0xC62A,
    CalibrationIlluminant1 = 0xC65A,
    CalibrationIlluminant2 = 0xC65B,
    ActiveArea = 0xC68D,
    ForwardMatrix1 = 0xC714,
    ForwardMatrix2 = 0xC715,
};

constexpr int kPhotometricCfa = 32803;
constexpr int kPhotometricLinearRaw = 34892;

QString hex(quint32 tag)
{
    return QStringLiteral("0x%1").arg(tag, 4, 16, QLatin1Char('0'));
}

// ---------------------------------------------------------------------------
// Where the bytes come from: a file read with positioned reads, or memory.

class TSource {
public:
    virtual ~TSource() = default;
    qint64 size() const { return m_size; }
    // Reads exactly n bytes at offset; false when the source has fewer.
    virtual bool read(qint64 offset, void *to, qint64 n) = 0;

protected:
    qint64 m_size = 0;
};

class TMemorySource final : public TSource {
public:
    explicit TMemorySource(QByteArrayView bytes) : m_bytes(bytes) { m_size = bytes.size(); }
    bool read(qint64 offset, void *to, qint64 n) override
    {
        if (offset < 0 || n < 0 || offset > m_size || n > m_size - offset)
            return false;
        if (n > 0)
            std::memcpy(to, m_bytes.data() + offset, std::size_t(n));
        return true;
    }

private:
    QByteArrayView m_bytes;
};

class TFileSource final : public TSource {
public:
    explicit TFileSource(const QString &path) : m_file(path)
    {
        if (QFileInfo(path).isDir())
            fail(QStringLiteral("Is a directory"));
        if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            fail(m_file.errorString());
        m_size = m_file.size();
    }
    bool read(qint64 offset, void *to, qint64 n) override
    {
        if (offset < 0 || n < 0 || offset > m_size || n > m_size - offset)
            return false;
        return m_file.seek(offset) && m_file.read(static_cast<char *>(to), n) == n;
    }

private:
    QFile m_file;
};

// ---------------------------------------------------------------------------
// Directories.

struct TEntry {
    quint16 tag = 0, type = 0;
    quint32 count = 0;
    uchar field[4] = {};
};
using TDirectory = std::vector<TEntry>;

// Bytes of one value of each TIFF type (0: unknown type).
constexpr int kTypeSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

int typeSize(quint16 type)
{
    return type < std::size(kTypeSizes) ? kTypeSizes[type] : 0;
}

class TDirectoryReader {
public:
    TDirectoryReader(TSource &source, bool bigEndian) : m_source(source), m_big(bigEndian) {}

    quint16 u16(const uchar *p) const
    {
        return m_big ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
    }
    quint32 u32(const uchar *p) const
    {
        return m_big ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
    }
    bool bigEndian() const { return m_big; }

    TDirectory directory(qint64 offset)
    {
        uchar head[2];
        if (!m_source.read(offset, head, 2))
            fail(QStringLiteral("a directory lies past the end of the file (at byte %1)")
                     .arg(offset));
        const quint32 count = u16(head);
        if (count > limits::kMaxDirectoryEntries)
            fail(QStringLiteral("a directory has %1 entries").arg(count));
        std::vector<uchar> bytes(std::size_t(count) * 12);
        if (!m_source.read(offset + 2, bytes.data(), qint64(bytes.size())))
            fail(QStringLiteral("the directory at byte %1 runs past the end of the file")
                     .arg(offset));
        TDirectory dir(count);
        for (quint32 i = 0; i < count; ++i) {
            const uchar *e = bytes.data() + i * 12;
            dir[i].tag = u16(e);
            dir[i].type = u16(e + 2);
            dir[i].count = u32(e + 4);
            std::memcpy(dir[i].field, e + 8, 4);
        }
        return dir;
    }

    // The entry's values as bytes in file order, at most maxCount of them.
    std::vector<uchar> valueBytes(const TEntry &e, quint64 maxCount)
    {
        const int size = typeSize(e.type);
        if (size == 0)
            fail(QStringLiteral("tag %1 has the unknown type %2").arg(hex(e.tag)).arg(e.type));
        if (e.count > maxCount)
            fail(QStringLiteral("tag %1 has %2 values, more than %3")
                     .arg(hex(e.tag))
                     .arg(e.count)
                     .arg(maxCount));
        const qint64 bytes = qint64(e.count) * size;
        const qint64 offset = u32(e.field);
        if (bytes > 4 && (offset > m_source.size() || bytes > m_source.size() - offset))
            fail(QStringLiteral("the values of tag %1 lie past the end of the file")
                     .arg(hex(e.tag)));
        std::vector<uchar> out(static_cast<std::size_t>(bytes));
        if (bytes == 0) {
            return out;
        } else if (bytes <= 4) {
            std::memcpy(out.data(), e.field, std::size_t(bytes));
        } else if (!m_source.read(offset, out.data(), bytes)) {
            fail(QStringLiteral("the values of tag %1 lie past the end of the file")
                     .arg(hex(e.tag)));
        }
        return out;
    }

    // Unsigned integers (BYTE, SHORT, LONG, IFD).
    std::vector<quint64> integers(const TEntry &e, quint64 maxCount)
    {
        const std::vector<uchar> b = valueBytes(e, maxCount);
        std::vector<quint64> out(e.count);
        for (quint32 i = 0; i < e.count; ++i) {
            switch (e.type) {
            case 1:
            case 7: out[i] = b[i]; break;
            case 3: out[i] = u16(&b[i * 2]); break;
            case 4:
            case 13: out[i] = u32(&b[i * 4]); break;
            default:
                fail(QStringLiteral("tag %1 has type %2, not an unsigned integer")
                         .arg(hex(e.tag))
                         .arg(e.type));
            }
        }
        return out;
    }

    // Numbers of any numeric type; a fraction with denominator 0 reads 0.
    std::vector<double> reals(const TEntry &e, quint64 maxCount)
    {
        const std::vector<uchar> b = valueBytes(e, maxCount);
        std::vector<double> out(e.count);
        const auto fraction = [](double num, double den) { return den == 0 ? 0.0 : num / den; };
        for (quint32 i = 0; i < e.count; ++i) {
            switch (e.type) {
            case 1:
            case 7: out[i] = b[i]; break;
            case 6: out[i] = qint8(b[i]); break;
            case 3: out[i] = u16(&b[i * 2]); break;
            case 8: out[i] = qint16(u16(&b[i * 2])); break;
            case 4:
            case 13: out[i] = u32(&b[i * 4]); break;
            case 9: out[i] = qint32(u32(&b[i * 4])); break;
            case 5: out[i] = fraction(u32(&b[i * 8]), u32(&b[i * 8 + 4])); break;
            case 10: out[i] = fraction(qint32(u32(&b[i * 8])), qint32(u32(&b[i * 8 + 4]))); break;
            case 11: {
                const quint32 bits = u32(&b[i * 4]);
                float f;
                std::memcpy(&f, &bits, 4);
                out[i] = double(f);
                break;
            }
            case 12: {
                const quint64 bits = quint64(u32(&b[i * 8])) << 32 | u32(&b[i * 8 + 4]);
                const quint64 ordered = m_big ? bits : (bits >> 32 | bits << 32);
                std::memcpy(&out[i], &ordered, 8);
                break;
            }
            default:
                fail(
                    QStringLiteral("tag %1 has type %2, not a number").arg(hex(e.tag)).arg(e.type));
            }
            if (!std::isfinite(out[i]))
                fail(QStringLiteral("tag %1 holds a value that is not a finite number")
                         .arg(hex(e.tag)));
        }
        return out;
    }

private:
    TSource &m_source;
    bool m_big;
};

const TEntry *find(const TDirectory &dir, quint16 tag)
{
    for (const TEntry &e : dir) {
        if (e.tag == tag)
            return &e;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------
// Where the stored values are: strips or tiles, each a block of the image.

struct TBlock {
    qint64 offset = 0, bytes = 0;
    quint32 x = 0, y = 0;          // first pixel in the image
    quint32 width = 0, height = 0; // the part inside the image
    quint32 storedWidth = 0;       // pixels a stored row holds (the tile width)
    quint32 storedHeight = 0;      // rows the block states (tile length, rows per strip)
};

struct TLayoutInfo {
    std::vector<TBlock> blocks;
    bool tiled = false;
    int samplesPerPixel = 1;
};

// ---------------------------------------------------------------------------
// Unpacking of uncompressed rows.

// One row of stored samples into 16-bit values; MSB-first bit packing for
// widths other than 8 and 16, as TIFF's FillOrder 1 (the DNG rule for every
// byte order).
void unpackRow(const uchar *src, quint16 *dst, quint32 n, int bits, bool bigEndian)
{
    if (bits == 16) {
        // A copy in the machine's order, a vectorized swap in the other.
        if (bigEndian)
            qFromBigEndian<quint16>(src, qsizetype(n), dst);
        else
            qFromLittleEndian<quint16>(src, qsizetype(n), dst);
    } else if (bits == 8) {
        for (quint32 i = 0; i < n; ++i)
            dst[i] = src[i];
    } else if (bits == 12) {
        quint32 i = 0;
        for (; i + 1 < n; i += 2, src += 3) {
            dst[i] = quint16(src[0] << 4 | src[1] >> 4);
            dst[i + 1] = quint16((src[1] & 0x0F) << 8 | src[2]);
        }
        if (i < n)
            dst[i] = quint16(src[0] << 4 | src[1] >> 4);
    } else {
        quint32 i = 0;
        if (bits == 14) {
            for (; i + 3 < n; i += 4, src += 7) {
                dst[i] = quint16(src[0] << 6 | src[1] >> 2);
                dst[i + 1] = quint16((src[1] & 0x03) << 12 | src[2] << 4 | src[3] >> 4);
                dst[i + 2] = quint16((src[3] & 0x0F) << 10 | src[4] << 2 | src[5] >> 6);
                dst[i + 3] = quint16((src[5] & 0x3F) << 8 | src[6]);
            }
        }
        quint64 acc = 0;
        int have = 0;
        const quint32 mask = (1u << bits) - 1;
        for (; i < n; ++i) {
            while (have < bits) {
                acc = acc << 8 | *src++;
                have += 8;
            }
            have -= bits;
            dst[i] = quint16((acc >> have) & mask);
        }
    }
}

// Bytes of a stored row of n samples.
qint64 rowBytes(quint64 samples, int bits)
{
    return qint64((samples * quint64(bits) + 7) / 8);
}

// ---------------------------------------------------------------------------
// Lossless JPEG (ITU T.81 process 14, SOF3).

class TLosslessJpeg {
public:
    struct THuffman {
        static constexpr int kLookupBits = 10;
        // (code length << 8 | symbol) of every code of up to kLookupBits bits
        // by its bits, left-aligned; 0 where a longer code starts.
        std::array<quint16, 1 << kLookupBits> lookup{};
        // Where a code and its extra bits together fit in kLookupBits: the
        // difference and the bits both take (0: not so).
        std::array<qint16, 1 << kLookupBits> fastDifference{};
        std::array<quint8, 1 << kLookupBits> fastLength{};
        std::array<qint32, 18> maxCode{};
        std::array<qint32, 17> valueIndex{}, minCode{};
        std::array<uchar, 256> values{};
        bool defined = false;
    };

    // Parses the markers up to the scan; data ends where the block ends.
    TLosslessJpeg(const uchar *data, qint64 size, quint32 index)
        : m_data(data), m_size(size), m_index(index)
    {
        parseHeaders();
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    int components() const { return m_components; }

    // Decodes row after row; row(r, samples) receives width * components samples.
    template <typename RowSink> void decode(RowSink &&row)
    {
        const int rowSamples = m_width * m_components;
        std::vector<int> previous(static_cast<std::size_t>(rowSamples)), current(previous.size());
        std::vector<quint16> out(previous.size());
        m_pos = m_scanStart;
        m_bits = 0;
        m_have = 0;
        m_padded = 0;
        const int initial = 1 << (m_precision - m_pointTransform - 1);
        const int nc = m_components;
        for (int r = 0; r < m_height; ++r) {
            for (int c = 0; c < m_width; ++c) {
                for (int k = 0; k < nc; ++k) {
                    const int i = c * nc + k;
                    int predicted;
                    if (r == 0)
                        predicted = c == 0 ? initial : current[std::size_t(i - nc)];
                    else if (c == 0)
                        predicted = previous[std::size_t(i)];
                    else
                        predicted = predict(current[std::size_t(i - nc)], previous[std::size_t(i)],
                                            previous[std::size_t(i - nc)]);
                    current[std::size_t(i)] = (predicted + difference(*m_table[k])) & 0xFFFF;
                }
            }
            for (int i = 0; i < rowSamples; ++i)
                out[std::size_t(i)] = quint16(current[std::size_t(i)] << m_pointTransform);
            row(r, out.data());
            std::swap(previous, current);
        }
        // A stream that ran out fed zeros; more than its byte padding is a cut.
        if (qint64(m_padded) * 8 - m_have > 0)
            fail(QStringLiteral("raw data cut short: the lossless JPEG data of block %1 end early")
                     .arg(m_index));
    }

private:
    void parseHeaders()
    {
        qint64 p = 0;
        const auto byte = [&](qint64 at) -> int {
            if (at < 0 || at >= m_size)
                fail(QStringLiteral(
                         "raw data cut short: the lossless JPEG header of block %1 ends early")
                         .arg(m_index));
            return m_data[at];
        };
        if (byte(0) != 0xFF || byte(1) != 0xD8)
            fail(QStringLiteral("block %1 is not a JPEG stream").arg(m_index));
        p = 2;
        bool haveFrame = false;
        for (int segments = 0;; ++segments) {
            if (segments > limits::kMaxJpegSegments)
                fail(QStringLiteral("the JPEG stream of block %1 has too many segments")
                         .arg(m_index));
            if (byte(p) != 0xFF)
                fail(QStringLiteral("the JPEG stream of block %1 has no marker at byte %2")
                         .arg(m_index)
                         .arg(p));
            while (byte(p) == 0xFF)
                ++p; // fill bytes
            const int marker = byte(p++);
            const qint64 length = byte(p) << 8 | byte(p + 1);
            if (length < 2)
                fail(QStringLiteral("a JPEG segment of block %1 has the length %2")
                         .arg(m_index)
                         .arg(length));
            const qint64 body = p + 2, end = p + length;
            byte(end - 1);
            switch (marker) {
            case 0xC4: parseHuffman(body, end, byte); break;
            case 0xC3:
                parseFrame(body, end, byte);
                haveFrame = true;
                break;
            case 0xC0:
            case 0xC1:
            case 0xC2:
            case 0xC5:
            case 0xC6:
            case 0xC7:
            case 0xC9:
            case 0xCA:
            case 0xCB:
            case 0xCD:
            case 0xCE:
            case 0xCF:
                fail(QStringLiteral("block %1 is a JPEG of frame type SOF%2, not lossless (SOF3)")
                         .arg(m_index)
                         .arg(marker - 0xC0));
            case 0xDD:
                if (length >= 4 && (byte(body) | byte(body + 1)) != 0)
                    fail(QStringLiteral("the lossless JPEG of block %1 has restart intervals, "
                                        "which are not read")
                             .arg(m_index));
                break;
            case 0xDA:
                if (!haveFrame)
                    fail(QStringLiteral("the lossless JPEG of block %1 has no frame header")
                             .arg(m_index));
                parseScan(body, end, byte);
                m_scanStart = end;
                return;
            case 0xD9:
                fail(QStringLiteral("the JPEG stream of block %1 ends before its scan")
                         .arg(m_index));
            default: break; // APPn, COM, ...
            }
            p = end;
        }
    }

    template <typename Byte> void parseHuffman(qint64 p, qint64 end, Byte &byte)
    {
        while (p < end) {
            const int classAndId = byte(p++);
            if ((classAndId >> 4) != 0 || (classAndId & 15) > 3)
                fail(QStringLiteral("bad Huffman table in block %1: class/id %2")
                         .arg(m_index)
                         .arg(classAndId));
            THuffman &h = m_tables[std::size_t(classAndId & 15)];
            int counts[17] = {};
            int total = 0;
            for (int len = 1; len <= 16; ++len)
                total += counts[len] = byte(p++);
            if (total > 256 || total == 0)
                fail(QStringLiteral("bad Huffman table in block %1: %2 codes")
                         .arg(m_index)
                         .arg(total));
            for (int i = 0; i < total; ++i) {
                h.values[std::size_t(i)] = uchar(byte(p++));
                if (h.values[std::size_t(i)] > 16)
                    fail(QStringLiteral("bad Huffman table in block %1: difference class %2")
                             .arg(m_index)
                             .arg(h.values[std::size_t(i)]));
            }
            h.lookup.fill(0);
            qint32 code = 0;
            int k = 0;
            for (int len = 1; len <= 16; ++len) {
                h.valueIndex[std::size_t(len)] = k;
                h.minCode[std::size_t(len)] = code;
                for (int i = 0; i < counts[len]; ++i, ++k, ++code) {
                    if (code >= (1 << len))
                        fail(QStringLiteral(
                                 "bad Huffman table in block %1: the codes overflow %2 bits")
                                 .arg(m_index)
                                 .arg(len));
                    if (len <= THuffman::kLookupBits) {
                        const int shift = THuffman::kLookupBits - len;
                        for (int fill = 0; fill < (1 << shift); ++fill)
                            h.lookup[std::size_t((code << shift) | fill)] =
                                quint16(len << 8 | h.values[std::size_t(k)]);
                    }
                }
                h.maxCode[std::size_t(len)] = counts[len] ? code - 1 : -1;
                code <<= 1;
            }
            h.maxCode[17] = 0x7FFFFFFF;
            h.fastLength.fill(0);
            for (int prefix = 0; prefix < (1 << THuffman::kLookupBits); ++prefix) {
                const int hit = h.lookup[std::size_t(prefix)];
                const int length = hit >> 8, symbol = hit & 0xFF;
                if (!hit || symbol == 16 || length + symbol > THuffman::kLookupBits)
                    continue;
                const int rest = THuffman::kLookupBits - length;
                const int v = (prefix & ((1 << rest) - 1)) >> (rest - symbol);
                h.fastDifference[std::size_t(prefix)] = qint16(extend(v, symbol));
                h.fastLength[std::size_t(prefix)] = quint8(length + symbol);
            }
            h.defined = true;
        }
    }

    template <typename Byte> void parseFrame(qint64 p, qint64 end, Byte &byte)
    {
        m_precision = byte(p);
        m_height = byte(p + 1) << 8 | byte(p + 2);
        m_width = byte(p + 3) << 8 | byte(p + 4);
        m_components = byte(p + 5);
        if (m_precision < 2 || m_precision > 16)
            fail(QStringLiteral("the lossless JPEG of block %1 has a precision of %2 bits")
                     .arg(m_index)
                     .arg(m_precision));
        if (m_components < 1 || m_components > 4)
            fail(QStringLiteral("the lossless JPEG of block %1 has %2 components")
                     .arg(m_index)
                     .arg(m_components));
        if (m_width == 0 || m_height == 0)
            fail(QStringLiteral("the lossless JPEG of block %1 is empty").arg(m_index));
        if (p + 6 + 3 * m_components > end)
            fail(QStringLiteral("the JPEG frame header of block %1 is too short").arg(m_index));
        for (int k = 0; k < m_components; ++k) {
            m_ids[std::size_t(k)] = byte(p + 6 + 3 * k);
            if (byte(p + 7 + 3 * k) != 0x11)
                fail(QStringLiteral("the lossless JPEG of block %1 is subsampled").arg(m_index));
        }
    }

    template <typename Byte> void parseScan(qint64 p, qint64 end, Byte &byte)
    {
        const int count = byte(p);
        if (count != m_components || p + 1 + 2 * count + 3 > end)
            fail(QStringLiteral("the JPEG scan of block %1 does not hold every component")
                     .arg(m_index));
        for (int k = 0; k < count; ++k) {
            const int id = byte(p + 1 + 2 * k), tables = byte(p + 2 + 2 * k);
            const int at =
                int(std::find(m_ids.begin(), m_ids.begin() + m_components, id) - m_ids.begin());
            if (at == m_components)
                fail(QStringLiteral("the JPEG scan of block %1 names an unknown component")
                         .arg(m_index));
            THuffman &table = m_tables[std::size_t((tables >> 4) & 3)];
            if (!table.defined)
                fail(QStringLiteral("bad Huffman table in block %1: table %2 is not defined")
                         .arg(m_index)
                         .arg(tables >> 4));
            m_table[std::size_t(at)] = &table;
        }
        for (int k = 0; k < m_components; ++k) {
            if (!m_table[std::size_t(k)])
                fail(QStringLiteral("the JPEG scan of block %1 names a component twice")
                         .arg(m_index));
        }
        m_predictor = byte(p + 1 + 2 * count);
        m_pointTransform = byte(p + 3 + 2 * count) & 15;
        if (m_predictor < 1 || m_predictor > 7)
            fail(QStringLiteral("the lossless JPEG of block %1 has predictor %2")
                     .arg(m_index)
                     .arg(m_predictor));
        if (m_pointTransform >= m_precision)
            fail(QStringLiteral("the lossless JPEG of block %1 has a point transform of %2")
                     .arg(m_index)
                     .arg(m_pointTransform));
    }

    int predict(int a, int b, int c) const
    {
        switch (m_predictor) {
        case 1: return a;
        case 2: return b;
        case 3: return c;
        case 4: return a + b - c;
        case 5: return a + ((b - c) >> 1);
        case 6: return b + ((a - c) >> 1);
        default: return (a + b) >> 1;
        }
    }

    // Keeps at least 57 bits in the buffer; past the data, or at a marker,
    // zeros come in (and are counted).
    void fill()
    {
        while (m_have <= 56) {
            quint64 c = 0;
            if (m_pos < m_size) {
                c = m_data[m_pos];
                if (c == 0xFF) {
                    if (m_pos + 1 < m_size && m_data[m_pos + 1] == 0) {
                        m_pos += 2;
                    } else {
                        c = 0;
                        ++m_padded;
                        m_pos = m_size; // a marker: the scan's data end here
                    }
                } else {
                    ++m_pos;
                }
            } else {
                ++m_padded;
            }
            m_bits |= c << (56 - m_have);
            m_have += 8;
        }
    }

    int take(int n)
    {
        const int v = int(m_bits >> (64 - n));
        m_bits <<= n;
        m_have -= n;
        return v;
    }

    // A difference of `bits` extra bits v (ITU T.81 F.2.2.1 EXTEND).
    static int extend(int v, int bits)
    {
        if (bits == 0)
            return 0;
        return v < (1 << (bits - 1)) ? v - (1 << bits) + 1 : v;
    }

    int difference(const THuffman &h)
    {
        fill();
        const std::size_t prefix = std::size_t(m_bits >> (64 - THuffman::kLookupBits));
        if (const int fast = h.fastLength[prefix]) {
            m_bits <<= fast;
            m_have -= fast;
            return h.fastDifference[prefix];
        }
        int length, symbol;
        const quint16 hit = h.lookup[std::size_t(m_bits >> (64 - THuffman::kLookupBits))];
        if (hit) {
            length = hit >> 8;
            symbol = hit & 0xFF;
        } else {
            length = THuffman::kLookupBits + 1;
            qint32 code = qint32(m_bits >> (64 - length));
            while (length <= 16 && code > h.maxCode[std::size_t(length)])
                code = qint32(m_bits >> (64 - ++length));
            if (length > 16)
                fail(QStringLiteral("bad Huffman code in the lossless JPEG of block %1")
                         .arg(m_index));
            const qint32 at =
                h.valueIndex[std::size_t(length)] + code - h.minCode[std::size_t(length)];
            if (at < 0 || at > 255)
                fail(QStringLiteral("bad Huffman code in the lossless JPEG of block %1")
                         .arg(m_index));
            symbol = h.values[std::size_t(at)];
        }
        m_bits <<= length;
        m_have -= length;
        if (symbol == 0)
            return 0;
        if (symbol == 16)
            return 32768;
        return extend(take(symbol), symbol);
    }

    const uchar *m_data;
    qint64 m_size;
    quint32 m_index;
    std::array<THuffman, 4> m_tables;
    std::array<const THuffman *, 4> m_table{};
    std::array<int, 4> m_ids{};
    int m_precision = 0, m_width = 0, m_height = 0, m_components = 0;
    int m_predictor = 1, m_pointTransform = 0;
    qint64 m_scanStart = 0, m_pos = 0;
    quint64 m_bits = 0;
    int m_have = 0, m_padded = 0;
};

// ---------------------------------------------------------------------------
// The decoder.

class TDecoder {
public:
    TDecoder(TSource &source, const std::atomic<bool> *cancel) : m_source(source), m_cancel(cancel)
    {
    }

    // With a sink, the values go to it and the image keeps none.
    TRawImage run(bool withPixels, TRowSink *sink)
    {
        readDirectories();
        TRawImage image;
        image.info = m_info;
        m_sink = sink;
        if (sink && !sink->begin(m_info))
            return image;
        if (withPixels)
            readPixels(image);
        return image;
    }

private:
    void readDirectories()
    {
        uchar head[8];
        if (!m_source.read(0, head, 8))
            fail(QStringLiteral("not a TIFF file: shorter than its header"));
        const bool big = head[0] == 'M' && head[1] == 'M';
        if (!(big || (head[0] == 'I' && head[1] == 'I')))
            fail(QStringLiteral("not a TIFF file: no byte order mark"));
        m_reader = std::make_unique<TDirectoryReader>(m_source, big);
        if (m_reader->u16(head + 2) != 42)
            fail(QStringLiteral("not a TIFF file: no 42 in the header"));
        const TDirectory ifd0 = m_reader->directory(m_reader->u32(head + 4));

        // The raw image: the first SubIFD of NewSubFileType 0, else IFD0.
        std::optional<TDirectory> rawDir;
        if (const TEntry *sub = find(ifd0, SubIfds)) {
            for (quint64 offset : m_reader->integers(*sub, limits::kMaxSubIfds)) {
                TDirectory dir = m_reader->directory(qint64(offset));
                if (unsignedValue(dir, NewSubFileType, 0) == 0) {
                    rawDir = std::move(dir);
                    break;
                }
            }
        }
        if (!rawDir) {
            const quint64 photometric = unsignedValue(ifd0, Photometric, 0);
            if (unsignedValue(ifd0, NewSubFileType, 0) == 0 &&
                (photometric == kPhotometricCfa || photometric == kPhotometricLinearRaw))
                rawDir = ifd0;
        }
        if (!rawDir)
            fail(QStringLiteral(
                "no raw image: no directory of NewSubFileType 0 holds CFA or LinearRaw data"));
        readCamera(ifd0);
        readRaw(*rawDir);
        readColour(ifd0);
    }

    quint64 unsignedValue(const TDirectory &dir, quint16 tag, quint64 fallback)
    {
        const TEntry *e = find(dir, tag);
        if (!e)
            return fallback;
        const std::vector<quint64> v = m_reader->integers(*e, limits::kMaxSmallValues);
        if (v.empty())
            fail(QStringLiteral("tag %1 holds no value").arg(hex(tag)));
        return v[0];
    }

    std::vector<double> reals(const TDirectory &dir, quint16 tag,
                              quint64 maxCount = limits::kMaxSmallValues)
    {
        const TEntry *e = find(dir, tag);
        return e ? m_reader->reals(*e, maxCount) : std::vector<double>();
    }

    void readCamera(const TDirectory &ifd0)
    {
        if (const TEntry *e = find(ifd0, Model)) {
            const std::vector<uchar> text = m_reader->valueBytes(*e, 256);
            const auto end = std::find(text.begin(), text.end(), uchar(0));
            m_info.model = QString::fromLatin1(reinterpret_cast<const char *>(text.data()),
                                               qsizetype(end - text.begin()))
                               .trimmed();
        }
        const quint64 orientation = unsignedValue(ifd0, Orientation, 1);
        m_info.orientation = orientation >= 1 && orientation <= 8 ? int(orientation) : 1;
    }

    void readRaw(const TDirectory &dir)
    {
        TRawInfo &info = m_info;
        const quint64 width = unsignedValue(dir, ImageWidth, 0),
                      height = unsignedValue(dir, ImageLength, 0);
        if (width == 0 || height == 0)
            fail(QStringLiteral("the raw image has no size"));
        if (width > limits::kMaxSide || height > limits::kMaxSide ||
            width * height > limits::kMaxPixels)
            fail(QStringLiteral("the raw image's size %1 x %2 exceeds the limit")
                     .arg(width)
                     .arg(height));
        info.width = int(width);
        info.height = int(height);

        const quint64 compression = unsignedValue(dir, Compression, 1);
        if (compression != 1 && compression != 7)
            fail(QStringLiteral("the raw image's compression %1 (%2) is not read")
                     .arg(compression)
                     .arg(lookup(kCompressions, qint64(compression), "unknown")));
        info.compression = int(compression);

        const quint64 samples = unsignedValue(dir, SamplesPerPixel, 1);
        const quint64 photometric = unsignedValue(dir, Photometric, 0);
        if (photometric == kPhotometricCfa) {
            info.layout = TLayout::Cfa;
            if (samples != 1)
                fail(QStringLiteral("CFA data with %1 samples per pixel is not read").arg(samples));
            readPattern(dir);
        } else if (photometric == kPhotometricLinearRaw) {
            info.layout = TLayout::Linear;
            if (samples != 1)
                fail(QStringLiteral("LinearRaw data with %1 samples per pixel is not read (only "
                                    "one, as the Monochrom's)")
                         .arg(samples));
        } else {
            fail(QStringLiteral(
                     "the raw image's PhotometricInterpretation %1 is neither CFA nor LinearRaw")
                     .arg(photometric));
        }
        if (unsignedValue(dir, PlanarConfiguration, 1) != 1)
            fail(QStringLiteral("planar configuration other than 1 is not read"));

        std::vector<quint64> bits{8};
        if (const TEntry *e = find(dir, BitsPerSample))
            bits = m_reader->integers(*e, 4);
        if (bits.empty() ||
            std::adjacent_find(bits.begin(), bits.end(), std::not_equal_to<>()) != bits.end())
            fail(QStringLiteral("the raw image states different sample widths"));
        if (bits[0] < 8 || bits[0] > 16)
            fail(QStringLiteral("samples of %1 bits are not read (8 to 16)").arg(bits[0]));
        info.bitsPerSample = int(bits[0]);

        if (const TEntry *e = find(dir, LinearizationTable)) {
            const std::vector<quint64> table =
                m_reader->integers(*e, limits::kMaxLinearizationEntries);
            if (table.empty())
                fail(QStringLiteral("the LinearizationTable is empty"));
            info.linearization.assign(table.begin(), table.end());
            for (quint64 v : table) {
                if (v > 0xFFFF)
                    fail(QStringLiteral("the LinearizationTable holds %1, more than 16 bits")
                             .arg(v));
            }
        }

        readLevels(dir);
        readBlocks(dir);
    }

    void readPattern(const TDirectory &dir)
    {
        const TEntry *dim = find(dir, CfaRepeatPatternDim), *pattern = find(dir, CfaPattern);
        if (!dim || !pattern)
            fail(QStringLiteral("the CFA image has no CFARepeatPatternDim or CFAPattern"));
        const std::vector<quint64> d = m_reader->integers(*dim, 2);
        if (d.size() != 2 || d[0] != 2 || d[1] != 2)
            fail(QStringLiteral("only a 2 x 2 colour filter pattern is read, not %1 x %2")
                     .arg(d.empty() ? 0 : d[0])
                     .arg(d.size() < 2 ? 0 : d[1]));
        const std::vector<quint64> p = m_reader->integers(*pattern, 4);
        if (p.size() != 4)
            fail(QStringLiteral("the CFAPattern has %1 values, not 4").arg(p.size()));
        std::vector<quint64> planes{0, 1, 2};
        if (const TEntry *e = find(dir, CfaPlaneColor))
            planes = m_reader->integers(*e, 4);
        if (unsignedValue(dir, CfaLayout, 1) != 1)
            fail(QStringLiteral("a CFA layout other than rectangular is not read"));
        for (int i = 0; i < 4; ++i) {
            if (p[std::size_t(i)] >= planes.size() || planes[std::size_t(p[std::size_t(i)])] > 2)
                fail(QStringLiteral(
                    "the colour filter holds colours other than red, green and blue"));
            m_info.cfa[std::size_t(i)] = uint8_t(planes[std::size_t(p[std::size_t(i)])]);
        }
    }

    void readLevels(const TDirectory &dir)
    {
        TRawInfo &info = m_info;
        info.activeTop = info.activeLeft = 0;
        info.activeBottom = info.height;
        info.activeRight = info.width;
        if (const TEntry *e = find(dir, ActiveArea)) {
            const std::vector<quint64> a = m_reader->integers(*e, 4);
            if (a.size() != 4 || a[0] >= a[2] || a[1] >= a[3] || a[2] > quint64(info.height) ||
                a[3] > quint64(info.width))
                fail(QStringLiteral("the ActiveArea lies outside the raw image"));
            info.activeTop = int(a[0]);
            info.activeLeft = int(a[1]);
            info.activeBottom = int(a[2]);
            info.activeRight = int(a[3]);
        }
        const int activeWidth = info.activeRight - info.activeLeft;
        const int activeHeight = info.activeBottom - info.activeTop;

        // DefaultCrop, kept inside the active area.
        const std::vector<double> origin = reals(dir, DefaultCropOrigin, 2);
        const std::vector<double> size = reals(dir, DefaultCropSize, 2);
        info.cropX = origin.size() == 2 ? std::clamp(origin[0], 0.0, double(activeWidth - 1)) : 0;
        info.cropY = origin.size() == 2 ? std::clamp(origin[1], 0.0, double(activeHeight - 1)) : 0;
        info.cropWidth = size.size() == 2 ? std::clamp(size[0], 1.0, activeWidth - info.cropX)
                                          : activeWidth - info.cropX;
        info.cropHeight = size.size() == 2 ? std::clamp(size[1], 1.0, activeHeight - info.cropY)
                                           : activeHeight - info.cropY;

        info.blackRepeatRows = info.blackRepeatColumns = 1;
        if (const TEntry *e = find(dir, BlackLevelRepeatDim)) {
            const std::vector<quint64> d = m_reader->integers(*e, 2);
            if (d.size() != 2 || d[0] < 1 || d[1] < 1 || d[0] > 2 || d[1] > 2)
                fail(QStringLiteral("a BlackLevelRepeatDim other than up to 2 x 2 is not read"));
            info.blackRepeatRows = int(d[0]);
            info.blackRepeatColumns = int(d[1]);
        }
        info.blackLevel.fill(0);
        const std::vector<double> black = reals(dir, BlackLevel, 4);
        const std::size_t cells = std::size_t(info.blackRepeatRows * info.blackRepeatColumns);
        if (black.size() == 1 && cells > 1) {
            info.blackLevel.fill(black[0]);
        } else if (!black.empty()) {
            if (black.size() != cells)
                fail(QStringLiteral("the BlackLevel has %1 values, its pattern %2 cells")
                         .arg(black.size())
                         .arg(cells));
            std::copy(black.begin(), black.end(), info.blackLevel.begin());
        }
        const auto deltas = [&](quint16 tag, int expected, std::vector<float> &out) {
            const std::vector<double> v = reals(dir, tag);
            if (v.empty())
                return;
            if (v.size() != std::size_t(expected))
                fail(QStringLiteral("tag %1 has %2 values, the active area %3")
                         .arg(hex(tag))
                         .arg(v.size())
                         .arg(expected));
            out.assign(v.begin(), v.end());
        };
        info.blackDeltaH.clear();
        info.blackDeltaV.clear();
        deltas(BlackLevelDeltaH, activeWidth, info.blackDeltaH);
        deltas(BlackLevelDeltaV, activeHeight, info.blackDeltaV);

        // WhiteLevel; by default the largest value stored, or the table's last entry.
        if (find(dir, WhiteLevel))
            info.whiteLevel = quint32(std::min<quint64>(unsignedValue(dir, WhiteLevel, 0), 0xFFFF));
        else if (!info.linearization.empty())
            info.whiteLevel = info.linearization.back();
        else
            info.whiteLevel = (1u << info.bitsPerSample) - 1;
    }

    void readBlocks(const TDirectory &dir)
    {
        TRawInfo &info = m_info;
        const quint32 width = quint32(info.width), height = quint32(info.height);
        const bool tiled = find(dir, TileOffsets) != nullptr;
        quint64 across = 1, down = 1, blockWidth = width, blockHeight = height;
        if (tiled) {
            blockWidth = unsignedValue(dir, TileWidth, 0);
            blockHeight = unsignedValue(dir, TileLength, 0);
            if (blockWidth == 0 || blockHeight == 0 || blockWidth > limits::kMaxSide ||
                blockHeight > limits::kMaxSide)
                fail(QStringLiteral("the tile size %1 x %2 is not usable")
                         .arg(blockWidth)
                         .arg(blockHeight));
            across = (width + blockWidth - 1) / blockWidth;
        } else {
            blockHeight = std::clamp<quint64>(unsignedValue(dir, RowsPerStrip, height), 1, height);
        }
        down = (height + blockHeight - 1) / blockHeight;
        const quint64 count = across * down;
        if (count > limits::kMaxBlocks)
            fail(QStringLiteral("the raw image has %1 %2, more than the limit")
                     .arg(count)
                     .arg(tiled ? "tiles" : "strips"));
        const char *kind = tiled ? "tile" : "strip";
        const TEntry *offsetsEntry = find(dir, tiled ? TileOffsets : StripOffsets);
        const TEntry *countsEntry = find(dir, tiled ? TileByteCounts : StripByteCounts);
        if (!offsetsEntry || !countsEntry)
            fail(QStringLiteral("the raw image has no %1 offsets or byte counts")
                     .arg(QLatin1String(kind)));
        const std::vector<quint64> offsets = m_reader->integers(*offsetsEntry, limits::kMaxBlocks);
        const std::vector<quint64> counts = m_reader->integers(*countsEntry, limits::kMaxBlocks);
        if (offsets.size() != count || counts.size() != count)
            fail(QStringLiteral(
                     "the raw image needs %1 %2s, the file lists %3 offsets and %4 byte counts")
                     .arg(count)
                     .arg(QLatin1String(kind))
                     .arg(offsets.size())
                     .arg(counts.size()));

        const bool compressed = info.compression == 7;
        m_blocks.resize(count);
        quint64 present = 0, needed = 0;
        for (quint64 i = 0; i < count; ++i) {
            TBlock &b = m_blocks[i];
            b.x = quint32((i % across) * blockWidth);
            b.y = quint32((i / across) * blockHeight);
            b.width = quint32(std::min<quint64>(blockWidth, width - b.x));
            b.height = quint32(std::min<quint64>(blockHeight, height - b.y));
            b.storedWidth = quint32(blockWidth);
            b.storedHeight = quint32(blockHeight);
            b.offset = qint64(offsets[i]);
            b.bytes = qint64(counts[i]);
            // Uncompressed: the rows used, each padded to a byte. Lossless
            // JPEG: at least one bit per sample.
            const qint64 need = compressed ? qint64((quint64(b.width) * b.height + 7) / 8)
                                           : rowBytes(b.storedWidth, info.bitsPerSample) * b.height;
            if (compressed) {
                if (b.bytes < need)
                    fail(QStringLiteral("%1 %2 holds %3 bytes, too few for its %4 x %5 pixels")
                             .arg(QLatin1String(kind))
                             .arg(i)
                             .arg(b.bytes)
                             .arg(b.width)
                             .arg(b.height));
            } else {
                b.bytes = std::min(b.bytes, need);
            }
            present += quint64(b.bytes);
            needed += quint64(need);
        }
        if (present < needed)
            fail(QStringLiteral("the %1s hold %2 bytes, the pixels need %3")
                     .arg(QLatin1String(kind))
                     .arg(present)
                     .arg(needed));
        for (quint64 i = 0; i < count; ++i) {
            const TBlock &b = m_blocks[i];
            if (b.offset > m_source.size() || b.bytes > m_source.size() - b.offset)
                fail(QStringLiteral(
                         "raw data cut short: %1 %2 of %3 ends at byte %4, the file at byte %5")
                         .arg(QLatin1String(kind))
                         .arg(i)
                         .arg(count)
                         .arg(quint64(b.offset) + quint64(b.bytes))
                         .arg(m_source.size()));
        }
    }

    void readColour(const TDirectory &ifd0)
    {
        TRawInfo &info = m_info;
        const auto matrix = [&](quint16 tag, TMatrix3 &m) {
            const std::vector<double> v = reals(ifd0, tag, 12);
            m.present = v.size() == 9;
            if (m.present)
                std::copy(v.begin(), v.end(), m.m.begin());
        };
        matrix(ColorMatrix1, info.colorMatrix1);
        matrix(ColorMatrix2, info.colorMatrix2);
        matrix(ForwardMatrix1, info.forwardMatrix1);
        matrix(ForwardMatrix2, info.forwardMatrix2);
        matrix(CameraCalibration1, info.cameraCalibration1);
        matrix(CameraCalibration2, info.cameraCalibration2);
        const std::vector<double> neutral = reals(ifd0, AsShotNeutral, 4);
        info.hasAsShotNeutral = neutral.size() == 3;
        if (info.hasAsShotNeutral)
            std::copy(neutral.begin(), neutral.end(), info.asShotNeutral.begin());
        const std::vector<double> xy = reals(ifd0, AsShotWhiteXY, 2);
        info.hasAsShotWhiteXY = xy.size() == 2;
        if (info.hasAsShotWhiteXY)
            std::copy(xy.begin(), xy.end(), info.asShotWhiteXY.begin());
        const std::vector<double> balance = reals(ifd0, AnalogBalance, 4);
        if (balance.size() == 3)
            std::copy(balance.begin(), balance.end(), info.analogBalance.begin());
        info.calibrationIlluminant1 =
            int(std::min<quint64>(unsignedValue(ifd0, CalibrationIlluminant1, 0), 0xFFFF));
        info.calibrationIlluminant2 =
            int(std::min<quint64>(unsignedValue(ifd0, CalibrationIlluminant2, 0), 0xFFFF));
        const std::vector<double> exposure = reals(ifd0, BaselineExposure, 1);
        info.baselineExposure = exposure.empty() ? 0 : exposure[0];
    }

    void checkCancel()
    {
        if (m_cancel && m_cancel->load(std::memory_order_relaxed))
            fail(QStringLiteral("cancelled"));
    }

    void readPixels(TRawImage &image)
    {
        const TRawInfo &info = m_info;
        if (!m_sink)
            image.pixels.resize(std::size_t(info.width) * std::size_t(info.height));
        // The table as a lookup over every value a sample can take; values
        // past its end read as its last entry.
        if (!info.linearization.empty()) {
            m_lut.resize(65536);
            for (std::size_t v = 0; v < m_lut.size(); ++v)
                m_lut[v] = info.linearization[std::min(v, info.linearization.size() - 1)];
        }
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            checkCancel();
            if (info.compression == 7)
                readJpegBlock(image, m_blocks[i], quint32(i));
            else
                readStoredBlock(image, m_blocks[i], quint32(i));
        }
    }

    [[noreturn]] void cutShort(quint32 index)
    {
        fail(QStringLiteral("raw data cut short: block %1 could not be read whole").arg(index));
    }

    void linearize(quint16 *p, std::size_t n) const
    {
        if (m_lut.empty())
            return;
        for (std::size_t i = 0; i < n; ++i)
            p[i] = m_lut[p[i]];
    }

    void readStoredBlock(TRawImage &image, const TBlock &b, quint32 index)
    {
        const int bits = m_info.bitsPerSample;
        const std::size_t imageWidth = std::size_t(m_info.width);
        quint16 *const origin =
            m_sink ? nullptr : image.pixels.data() + std::size_t(b.y) * imageWidth + b.x;
        const qint64 stride = rowBytes(b.storedWidth, bits);

        // 16-bit strips straight into the picture, then turned to the
        // machine's byte order in place.
        if (!m_sink && bits == 16 && b.storedWidth == imageWidth) {
            const std::size_t n = std::size_t(b.width) * b.height;
            if (!m_source.read(b.offset, origin, qint64(n) * 2))
                cutShort(index);
            const bool swap = m_reader->bigEndian() != (Q_BYTE_ORDER == Q_BIG_ENDIAN);
            if (swap) {
                for (std::size_t i = 0; i < n; ++i)
                    origin[i] = quint16(origin[i] >> 8 | origin[i] << 8);
            }
            linearize(origin, n);
            return;
        }

        // Everything else in pieces of about 1 MB through a buffer.
        const quint32 rowsAtOnce =
            quint32(std::clamp<qint64>((1 << 20) / std::max<qint64>(stride, 1), 1, b.height));
        m_buffer.resize(std::size_t(stride) * rowsAtOnce);
        if (m_sink)
            m_row.resize(b.width);
        for (quint32 row = 0; row < b.height; row += rowsAtOnce) {
            const quint32 rows = std::min(rowsAtOnce, b.height - row);
            if (!m_source.read(b.offset + qint64(row) * stride, m_buffer.data(),
                               qint64(rows) * stride))
                cutShort(index);
            for (quint32 r = 0; r < rows; ++r) {
                quint16 *dst = m_sink ? m_row.data() : origin + std::size_t(row + r) * imageWidth;
                unpackRow(m_buffer.data() + std::size_t(r) * std::size_t(stride), dst, b.width,
                          bits, m_reader->bigEndian());
                linearize(dst, b.width);
                if (m_sink)
                    m_sink->row(int(b.x), int(b.y + row + r), int(b.width), dst);
            }
        }
    }

    void readJpegBlock(TRawImage &image, const TBlock &b, quint32 index)
    {
        m_buffer.resize(std::size_t(b.bytes));
        if (!m_source.read(b.offset, m_buffer.data(), b.bytes))
            cutShort(index);
        TLosslessJpeg jpeg(m_buffer.data(), b.bytes, index);
        // The JPEG's rows are the block's: width x components samples each.
        if (quint64(jpeg.width()) * quint64(jpeg.components()) != b.storedWidth ||
            quint32(jpeg.height()) < b.height || quint32(jpeg.height()) > b.storedHeight)
            fail(QStringLiteral("the lossless JPEG of block %1 is %2 x %3 with %4 components, the "
                                "block %5 x %6")
                     .arg(index)
                     .arg(jpeg.width())
                     .arg(jpeg.height())
                     .arg(jpeg.components())
                     .arg(b.storedWidth)
                     .arg(b.storedHeight));
        const std::size_t imageWidth = std::size_t(m_info.width);
        quint16 *const origin =
            m_sink ? nullptr : image.pixels.data() + std::size_t(b.y) * imageWidth + b.x;
        if (m_sink)
            m_row.resize(b.width);
        jpeg.decode([&](int r, const quint16 *samples) {
            if (quint32(r) >= b.height)
                return;
            quint16 *dst = m_sink ? m_row.data() : origin + std::size_t(r) * imageWidth;
            std::copy(samples, samples + b.width, dst);
            linearize(dst, b.width);
            if (m_sink)
                m_sink->row(int(b.x), int(b.y) + r, int(b.width), dst);
        });
    }

    TSource &m_source;
    const std::atomic<bool> *m_cancel;
    std::unique_ptr<TDirectoryReader> m_reader;
    TRawInfo m_info;
    std::vector<TBlock> m_blocks;
    std::vector<quint16> m_lut;
    std::vector<uchar> m_buffer;
    TRowSink *m_sink = nullptr;
    std::vector<quint16> m_row; // a row handed to the sink
};

TDecodeResult run(const std::function<std::unique_ptr<TSource>()> &open,
                  const std::atomic<bool> *cancel, bool withPixels, TRowSink *sink = nullptr)
{
    TDecodeResult result;
    try {
        const std::unique_ptr<TSource> source = open();
        TDecoder decoder(*source, cancel);
        result.image = decoder.run(withPixels, sink);
    } catch (const TFailure &failure) {
        result.image = TRawImage();
        result.error = failure.text;
    } catch (const std::bad_alloc &) {
        result.image = TRawImage();
        result.error = QStringLiteral("not enough memory for the raw image");
    }
    return result;
}

} // namespace

TDecodeResult decodeFile(const QString &path, const std::atomic<bool> *cancel)
{
    return run([&] { return std::make_unique<TFileSource>(path); }, cancel, true);
}

TDecodeResult decodeBytes(QByteArrayView bytes, const std::atomic<bool> *cancel)
{
    return run([&] { return std::make_unique<TMemorySource>(bytes); }, cancel, true);
}

TDecodeResult decodeFileRows(const QString &path, TRowSink &sink, const std::atomic<bool> *cancel)
{
    return run([&] { return std::make_unique<TFileSource>(path); }, cancel, true, &sink);
}

TDecodeResult readInfo(const QString &path)
{
    return run([&] { return std::make_unique<TFileSource>(path); }, nullptr, false);
}

} // namespace raw
