// Names of the Leica maker-note tags and the decoders of the Leica values the
// panel shows: frame selector, lens and image number.

#include "rawfile/tcodetable.h"
#include "rawfile/tm9file.h"

// Tags of the maker note's main directory and its sub-directories
constexpr TCodeText kLeicaTagNames[] = {
    {0x300A, "Contrast"},
    {0x300B, "Sharpening"},
    {0x300D, "Saturation"},
    {0x3033, "WhiteBalance"},
    {0x3034, "JPEGQuality"},
    {0x3036, "WB_RGBLevels"},
    {0x3038, "UserProfile"},
    {0x303A, "JPEGSize"},
    {0x3103, "SerialNumber"},
    {0x3109, "FirmwareVersion"},
    {0x312A, "BaseISO"},
    {0x312B, "SensorWidth"},
    {0x312C, "SensorHeight"},
    {0x312D, "SensorBitDepth"},
    {0x3402, "CameraTemperature"},
    {0x3405, "LensType"},
    {0x3406, "ApproximateFNumber"},
    {0x3407, "MeasuredLV"},
    {0x3408, "ExternalSensorBrightnessValue"},
    {0x3901, "Data1\t--> Panasonic Data1 Tags"},
    {0x3902, "Data2\t--> Panasonic Data2 Tags"},
};

QString TM9File::leicaTagName(int tag)
{
    return QStringLiteral("[Leica] ") + lookup(kLeicaTagNames, tag, "--- unbekannt ---");
}

// 0x3405 LensType, bits 0 and 1: the frame lines the lens brings up
constexpr TCodeText kFrameSelector[] = {{1, "28/90"}, {2, "24/35"}, {3, "50/75"}};

QString TM9File::leicaFrameSelectorAsString() const
{
    return lookup(kFrameSelector, m_leica.lensType & 3, "n.a");
}

// 0x3405 LensType, bits 2 to 9: the lens id. Some lenses share an id and are
// told apart by the frame code the lens sets; these rows are keyed by
// id * 4 + frame code and come first.
constexpr TCodeText kLensByIdAndFrame[] = {
    {0 * 4 + 0, "uncoded lens"},
    {6 * 4 + 0, "Summilux-M 35mm f/1.4"},
    {9 * 4 + 0, "Apo-Telyt-M 135mm f/3.4"},
    {16 * 4 + 1, "Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 16mm)"},
    {16 * 4 + 2, "Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 18mm)"},
    {16 * 4 + 3, "'Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 21mm)"},
    {31 * 4 + 0, "Noctilux-M 50mm f/1.2"},
    {39 * 4 + 0, "Tele-Elmar-M 135mm f/4 (II)"},
    {42 * 4 + 1, "Tri-Elmar-M 28-35-50mm f/4 ASPH. (at 28mm)"},
    {42 * 4 + 2, "Tri-Elmar-M 28-35-50mm f/4 ASPH. (at 35mm)"},
    {42 * 4 + 3, "Tri-Elmar-M 28-35-50mm f/4 ASPH. (at 50mm)"},
};

// The lens of an id for every other frame code.
constexpr TCodeText kLensById[] = {
    {0, "Elmarit-M 21mm f/2.8"},
    {1, "Elmarit-M 21mm f/2.8"},
    {3, "Elmarit-M 28mm f/2.8 (III)"},
    {4, "Tele-Elmarit-M 90mm f/2.8 (II)"},
    {5, "Summilux-M 50mm f/1.4 (II)"},
    {6, "Summicron-M 35mm f/2 (IV)"},
    {7, "Summicron-M 90mm f/2 (II)"},
    {9, "Elmarit-M 135mm f/2.8 (I/II)"},
    {16, "Summicron-M 50mm f/2 (III)"},
    {23, "Summicron-M 50mm f/2 (III)"},
    {24, "Elmarit-M 21mm f/2.8 ASPH."},
    {25, "Elmarit-M 24mm f/2.8 ASPH."},
    {26, "Summicron-M 28mm f/2 ASPH."},
    {27, "Elmarit-M 28mm f/2.8 (IV)"},
    {28, "Elmarit-M 28mm f/2.8 ASPH."},
    {29, "Summilux-M 35mm f/1.4 ASPH."},
    {30, "Summicron-M 35mm f/2 ASPH."},
    {31, " Noctilux-M 50mm f/1"},
    {32, "Summilux-M 50mm f/1.4 ASPH."},
    {33, "Summicron-M 50mm f/2 (IV, V)"},
    {34, "Elmar-M 50mm f/2.8"},
    {35, "Summilux-M 75mm f/1.4"},
    {36, "Apo-Summicron-M 75mm f/2 ASPH."},
    {37, "Apo-Summicron-M 90mm f/2 ASPH."},
    {38, "Elmarit-M 90mm f/2.8"},
    {39, "Macro-Elmar-M 90mm f/4"},
    {40, "Macro-Adapter M"},
    {42, "Summarit-M 35mm f/2.5"},
    {43, "Summarit-M 35mm f/2.5"},
    {44, "Summarit-M 50mm f/2.5"},
    {45, "Summarit-M 75mm f/2.5"},
    {46, "Summarit-M 90mm f/2.5"},
    {47, "Summilux-M 21mm f/1.4 ASPH."},
    {48, "Summilux-M 24mm f/1.4 ASPH."},
    {49, "Noctilux-M 50mm f/0.95 ASPH."},
    {50, "Elmar-M 24mm f/3.8 ASPH."},
    {52, "Super-Elmar-M 18mm f/3.8 ASPH."},
};

QString TM9File::leicaLensTypeAsString() const
{
    // The id is taken as 8 bits: higher bits of the value are dropped.
    const quint8 id = quint8(m_leica.lensType >> 2);
    const quint32 frame = m_leica.lensType & 3;
    const QString byFrame = lookup(kLensByIdAndFrame, id * 4 + frame, "");
    if (!byFrame.isEmpty())
        return byFrame;
    return lookup(kLensById, id, "Unknown");
}

QString TM9File::leicaImageUniqueIDAsString() const
{
    // A hexadecimal number; one that does not parse or does not fit 32 bits gives 0.
    bool ok = false;
    const int id = m_exif.imageUniqueID.toInt(&ok, 16);
    return QString::number(ok ? id : 0);
}
