// The Sony value decoders: stored maker-note values and the codes found in
// the data blocks, turned into display text. A code a table does not list
// gives "unbekannt" unless a decoder says otherwise.

#include "rawfile/tcodetable.h"
#include "rawfile/tm9file.h"

#include <QStringList>

#include <cmath>

namespace {

// 0x0102 Quality
constexpr TCodeText kQuality[] = {
    {-1, "n/a"},           {0, "RAW"},
    {1, "Super Fine"},     {2, "Fine"},
    {3, "Standard"},       {4, "Economy"},
    {5, "Extra Fine"},     {6, "RAW + JPEG"},
    {7, "Compressed RAW"}, {8, "Compressed RAW + JPEG"},
};

// 0x0105 Teleconverter
constexpr TCodeText kTeleconverter[] = {
    {0, "None"},
    {4, "Minolta/Sony AF 1.4x APO (D) (0x04)"},
    {5, "Minolta/Sony AF 2x APO (D) (0x05)"},
    {72, "Minolta/Sony AF 2x APO (D)"},
    {80, "Minolta AF 2x APO II"},
    {96, "Minolta AF 2x APO"},
    {136, "Minolta/Sony AF 1.4x APO (D)"},
    {144, "Minolta AF 1.4x APO II"},
    {160, "Minolta AF 1.4x APO"},
};

// 0x0115 WhiteBalance
constexpr TCodeText kWhiteBalance0115[] = {
    {0, "Auto"},      {1, "Color Temperature/Color Filter"},
    {16, "Daylight"}, {32, "Cloudy"},
    {48, "Shade"},    {64, "Tungsten"},
    {80, "Flash"},    {96, "Fluorescent"},
    {112, "Custom"},  {128, "Underwater"},
};

// 0x2008 LongExposureNoiseReduction
constexpr TCodeText kLongExposureNoiseReduction[] = {
    {0, "Off"},
    {1, "On (unused)"},
    {0x10001, "On (dark subtracted)"},
    {0xFFFF0000, "Off (65535)"},
    {0xFFFF0001, "On (65535)"},
    {0xFFFFFFFF, "n/a"},
};

// 0x200B MultiFrameNoiseReduction (low byte)
constexpr TCodeText kMultiFrameNoiseReduction[] = {
    {0, "Off"},
    {1, "On"},
    {255, "n/a"},
};

// 0x200E PictureEffect (low byte)
constexpr TCodeText kPictureEffect[] = {
    {0, "Off"},
    {1, "Toy Camera"},
    {2, "Pop Color"},
    {3, "Posterization"},
    {4, "Posterization B/W"},
    {5, "Retro Photo"},
    {6, "Soft High Key"},
    {7, "Partial Color (red)"},
    {8, "Partial Color (green)"},
    {9, "Partial Color (blue)"},
    {10, "Partial Color (yellow)"},
    {13, "High Contrast Monochrome"},
    {16, "Toy Camera (normal)"},
    {17, "Toy Camera (cool)"},
    {18, "Toy Camera (warm)"},
    {19, "Toy Camera (green)"},
    {20, "Toy Camera (magenta)"},
    {32, "Soft Focus (low)"},
    {33, "Soft Focus"},
    {34, "Soft Focus (high)"},
    {48, "Miniature (auto)"},
    {49, "Miniature (top)"},
    {50, "Miniature (middle horizontal)"},
    {51, "Miniature (bottom)"},
    {52, "Miniature (left)"},
    {53, "Miniature (middle vertical)"},
    {54, "Miniature (right)"},
    {64, "HDR Painting (low)"},
    {65, "HDR Painting"},
    {66, "HDR Painting (high)"},
    {80, "Rich-tone Monochrome"},
    {97, "Water Color"},
    {98, "Water Color 2"},
    {112, "Illustration (low)"},
    {113, "Illustration"},
    {114, "Illustration (high)"},
};

// 0x200F SoftSkinEffect
constexpr TCodeText kSoftSkinEffect[] = {
    {-1, "n/a"}, {0, "Off"}, {1, "Low"}, {2, "Mid"}, {3, "High"},
};

// 0x2016 AutoPortraitFramed
constexpr TCodeText kAutoPortraitFramed[] = {
    {0, "No"},
    {1, "Yes"},
};

// 0x2017 FlashAction
constexpr TCodeText kFlashAction[] = {
    {0, "Did not fire"},
    {1, "Flash Fired"},
    {2, "External Flash Fired"},
    {3, "Wireless Controlled Flash Fired"},
};

// 0x201A ElectronicFrontCurtainShutter
constexpr TCodeText kElectronicFrontCurtainShutter[] = {
    {0, "Off"},
    {1, "On"},
};

// 0x201B FocusMode
constexpr TCodeText kFocusMode[] = {
    {0, "Manual"}, {2, "AF-S"}, {3, "AF-C"}, {4, "AF-A"}, {6, "DMF"}, {7, "AF-D"},
};

// 0x201C AFAreaModeSetting
constexpr TCodeText kAFAreaModeSetting[] = {
    {0, "Wide"},          {1, "Center"},
    {3, "Flexible Spot"}, {4, "Flexible Spot (LA-EA4)"},
    {11, "Zone"},         {12, "Expanded Flexible Spot"},
};

// 0x201E AFPointSelected
constexpr TCodeText kAFZoneSelected[] = {
    {0, "n/a"},    {1, "Center"},       {2, "Top"},         {3, "Right"},    {4, "Left"},
    {5, "Bottom"}, {6, "Bottom Right"}, {7, "Bottom Left"}, {8, "Top Left"}, {9, "Top Right"},
};

// 0x2021 AFTracking
constexpr TCodeText kAFTracking[] = {
    {0, "Off"},
    {1, "Face Tracking"},
    {2, "Lock On AF"},
};

// 0x2023 MultiFrameNREffect
constexpr TCodeText kMultiFrameNREffect[] = {
    {0, "Normal"},
    {1, "High"},
};

// 0x2028 VariableLowPassFilter
constexpr TCodeText kVariableLowPassFilter[] = {
    {0, "n/a"},
    {1, "Off"},
    {0x10001, "Standard"},
    {0x20001, "High"},
};

// 0x2029 RawFileType
constexpr TCodeText kRawFileType[] = {
    {0, "Compressed Raw"},
    {1, "Uncompressed Raw"},
};

// 0x202B PrioritySetInAWB
constexpr TCodeText kPrioritySetInAWB[] = {
    {0, "Standard"},
    {1, "Ambience"},
    {2, "White"},
};

// 0xB001 SonyModelID
constexpr TCodeText kSonyModelID[] = {
    {2, "DSC-R1"},
    {256, "DSLR-A100"},
    {257, "DSLR-A900"},
    {258, "DSLR-A700"},
    {259, "DSLR-A200"},
    {260, "DSLR-A350"},
    {261, "DSLR-A300"},
    {262, "DSLR-A900 (APS-C mode)"},
    {263, "DSLR-A380/A390"},
    {264, "DSLR-A330"},
    {265, "DSLR-A230"},
    {266, "DSLR-A290"},
    {269, "DSLR-A850"},
    {270, "DSLR-A850 (APS-C mode)"},
    {273, "DSLR-A550"},
    {274, "DSLR-A500"},
    {275, "DSLR-A450"},
    {278, "NEX-5"},
    {279, "NEX-3"},
    {280, "SLT-A33"},
    {281, "SLT-A55 / SLT-A55V"},
    {282, "DSLR-A560"},
    {283, "DSLR-A580"},
    {284, "NEX-C3"},
    {285, "SLT-A35"},
    {286, "SLT-A65 / SLT-A65V"},
    {287, "SLT-A77 / SLT-A77V"},
    {288, "NEX-5N"},
    {289, "NEX-7"},
    {290, "NEX-VG20E"},
    {291, "SLT-A37"},
    {292, "SLT-A57"},
    {293, "NEX-F3"},
    {294, "SLT-A99 / SLT-A99V"},
    {295, "NEX-6"},
    {296, "NEX-5R"},
    {297, "DSC-RX100"},
    {298, "DSC-RX1"},
    {299, "NEX-VG900"},
    {300, "NEX-VG30E"},
    {302, "ILCE-3000 / ILCE-3500"},
    {303, "SLT-A58"},
    {305, "NEX-3N"},
    {306, "ILCE-7"},
    {307, "NEX-5T"},
    {308, "DSC-RX100M2"},
    {309, "DSC-RX10"},
    {310, "DSC-RX1R"},
    {311, "ILCE-7R"},
    {312, "ILCE-6000"},
    {313, "ILCE-5000"},
    {317, "DSC-RX100M3"},
    {318, "ILCE-7S"},
    {319, "ILCA-77M2"},
    {339, "ILCE-5100"},
    {340, "ILCE-7M2"},
    {341, "DSC-RX100M4"},
    {342, "DSC-RX10M2"},
    {344, "DSC-RX1RM2"},
    {346, "ILCE-QX1"},
    {347, "ILCE-7RM2"},
    {350, "ILCE-7SM2"},
    {353, "ILCA-68"},
    {354, "ILCA-99M2"},
    {355, "DSC-RX10M3"},
    {356, "DSC-RX100M5"},
    {357, "ILCE-6300"},
    {358, "ILCE-9"},
    {360, "ILCE-6500"},
    {362, "ILCE-7RM3"},
    {363, "ILCE-7M3"},
    {364, "DSC-RX0"},
    {365, "DSC-RX10M4"},
    {366, "DSC-RX100M6"},
    {367, "DSC-HX99"},
    {369, "DSC-RX100M5A"},
    {371, "ILCE-6400"},
    {372, "DSC-RX0M2"},
    {374, "DSC-RX100M7"},
    {375, "ILCE-7RM4"},
    {376, "ILCE-9M2"},
    {378, "ILCE-6600"},
    {379, "ILCE-6100"},
};

// 0xB023 SceneMode
constexpr TCodeText kSceneMode[] = {
    {0, "Standard"},
    {1, "Portrait"},
    {2, "Text"},
    {3, "Night Scene"},
    {4, "Sunset"},
    {5, "Sports"},
    {6, "Landscape"},
    {7, "Night Portrait"},
    {8, "Macro"},
    {9, "Super Macro"},
    {16, "Auto"},
    {17, "Night View/Portrait"},
    {18, "Sweep Panorama"},
    {19, "Handheld Night Shot"},
    {20, "Anti Motion Blur"},
    {21, "Cont. Priority AE"},
    {22, "Auto+"},
    {23, "3D Sweep Panorama"},
    {24, "Superior Auto"},
    {25, "High Sensitivity"},
    {26, "Fireworks"},
    {27, "Food"},
    {28, "Pet"},
    {33, "HDR"},
};

// 0xB024 ZoneMatching
constexpr TCodeText kZoneMatching[] = {
    {0, "ISO Setting Used"},
    {1, "High Key"},
    {2, "Low Key"},
};

// 0xB025 DynamicRangeOptimizer
constexpr TCodeText kDynamicRangeOptimizerB025[] = {
    {0, "Off"},           {1, "Standard"},     {2, "Advanced Auto"}, {3, "Auto"},
    {8, "Advanced Lv1"},  {9, "Advanced Lv2"}, {10, "Advanced Lv3"}, {11, "Advanced Lv4"},
    {12, "Advanced Lv5"}, {16, "Lv1"},         {17, "Lv2"},          {18, "Lv3"},
    {19, "Lv4"},          {20, "Lv5"},
};

// 0xB026 ImageStabilization
constexpr TCodeText kImageStabilization[] = {
    {0, "Off"},
    {1, "On"},
    {0xFFFFFFFF, "= n/a"},
};

// 0xB029 ColorMode
constexpr TCodeText kColorMode[] = {
    {-1, "n/a"},
    {0, "Standard"},
    {1, "Vivid"},
    {2, "Portrait"},
    {3, "Landscape"},
    {4, "Sunset"},
    {5, "Night View/Portrait"},
    {6, "B&W"},
    {7, "Adobe RGB"},
    {12, "Neutral"},
    {100, "Neutral"},
    {13, "Clear"},
    {101, "Clear"},
    {14, "Deep"},
    {102, "Deep"},
    {15, "Light"},
    {103, "Light"},
    {16, "Autumn Leaves"},
    {105, "Autumn Leaves"},
    {17, "Sepia"},
    {104, "Night View"},
};

// 0xB041 ExposureMode
constexpr TCodeText kExposureMode[] = {
    {0, "Program AE"},
    {1, "Portrait"},
    {2, "Beach"},
    {3, "Sports"},
    {4, "Snow"},
    {5, "Landscape"},
    {6, "Auto"},
    {7, "Aperture-priority AE"},
    {8, "Shutter speed priority AE"},
    {9, "Night Scene / Twilight"},
    {10, "Hi-Speed Shutter"},
    {11, "Twilight Portrait"},
    {12, "Soft Snap/Portrait"},
    {13, "Fireworks"},
    {14, "Smile Shutter"},
    {15, "Manual"},
    {18, "High Sensitivity"},
    {19, "Macro"},
    {20, "Advanced Sports Shooting"},
    {29, "Underwater"},
    {33, "Food"},
    {34, "Sweep Panorama"},
    {35, "Handheld Night Shot"},
    {36, "Anti Motion Blur"},
    {37, "Pet"},
    {38, "Backlight Correction HDR"},
    {39, "Superior Auto"},
    {40, "Background Defocus"},
    {41, "Soft Skin"},
    {42, "3D Image"},
    {65535, "n/a"},
};

// 0xB047 JPEGQuality
constexpr TCodeText kJPEGQuality[] = {
    {0, "Standard"},
    {1, "Fine"},
    {2, "Extra Fine"},
    {65535, "n/a"},
};

// 0xB048 FlashLevel (a gap at -8 and -7)
constexpr TCodeText kFlashLevel[] = {
    {-9, "-9/3"}, {-6, "-6/3"}, {-5, "-5/3"},  {-4, "-4/3"}, {-3, "-3/3"},
    {-2, "-2/3"}, {-1, "-1/3"}, {0, "Normal"}, {1, "+1/3"},  {2, "+2/3"},
    {3, "+3/3"},  {4, "+4/3"},  {5, "+5/3"},   {6, "+6/3"},  {128, "n/a"},
};

// 0xB049 ReleaseMode
constexpr TCodeText kReleaseMode[] = {
    {0, "Normal"},
    {2, "Continuous"},
    {5, "Exposure Bracketing"},
    {6, "White Balance Bracketing"},
    {8, "DRO Bracketing"},
    {65535, "n/a"},
};

// 0xB04B Anti-Blur
constexpr TCodeText kAntiBlur[] = {
    {0, "Off"},
    {1, "On (Continuous)"},
    {2, "On (Shooting)"},
    {65535, "n/a"},
};

// 0xB04F DynamicRangeOptimizer
constexpr TCodeText kDynamicRangeOptimizerB04F[] = {
    {0, "Off"},
    {1, "Standard"},
    {2, "Plus"},
};

// 0xB050 HighISONoiseReduction2
constexpr TCodeText kHighISONoiseReduction2[] = {
    {0, "Normal"}, {1, "High"}, {2, "Low"}, {3, "Off"}, {65535, "n/a"},
};

// 0xB052 IntelligentAuto
constexpr TCodeText kIntelligentAuto[] = {
    {0, "Off"},
    {1, "On"},
    {2, "Advanced"},
};

// 0xB054 WhiteBalance
constexpr TCodeText kWhiteBalanceB054[] = {
    {0, "Auto"},
    {4, "Custom"},
    {5, "Daylight"},
    {6, "Cloudy"},
    {7, "Cool White Fluorescent"},
    {8, "Day White Fluorescent"},
    {9, "Daylight Fluorescent"},
    {10, "Incandescent2"},
    {11, "Warm White Fluorescent"},
    {14, "Incandescent"},
    {15, "Flash"},
    {17, "Underwater 1 (Blue Water)"},
    {18, "Underwater 2 (Green Water)"},
};

// ReleaseMode2 of the blocks (146 begins with a blank)
constexpr TCodeText kReleaseMode2[] = {
    {0, "Normal"},
    {1, "Continuous"},
    {2, "Continuous - Exposure Bracketing"},
    {3, "Continuous - White Balance Bracketing"},
    {5, "Continuous - Burst"},
    {6, "Single Frame - Capture During Movie"},
    {7, "Continuous - Sweep Panorama"},
    {8, "Continuous - Anti-Motion Blur, Hand-held Twilight"},
    {9, "Continuous - HDR"},
    {10, "Continuous - Background defocus"},
    {13, "Continuous - 3D Sweep Panorama"},
    {15, "Continuous - High Resolution Sweep Panorama"},
    {16, "Continuous - 3D Image"},
    {17, "Continuous - Burst 2"},
    {19, "Continuous - Speed/Advance Priority"},
    {20, "Continuous - Multi Frame NR"},
    {23, "Single-frame - Exposure Bracketing"},
    {26, "Continuous Low"},
    {27, "Continuous - High Sensitivity"},
    {28, "Smile Shutter"},
    {29, "Continuous - Tele-zoom Advance Priority"},
    {146, " Single Frame - Movie Capture"},
};

// PictureEffect2 of the blocks
constexpr TCodeText kPictureEffect2[] = {
    {0, "Off"},
    {1, "Toy Camera"},
    {2, "Pop Color"},
    {3, "Posterization"},
    {4, "Retro Photo"},
    {5, "Soft High Key"},
    {6, "Partial Color"},
    {7, "High Contrast Monochrome"},
    {8, "Soft Focus"},
    {9, "HDR Painting"},
    {10, "Rich-tone Monochrome"},
    {11, "Miniature"},
    {12, "Water Color"},
    {13, "Illustration"},
};

// ExposureProgram of the blocks
constexpr TCodeText kExposureProgram3[] = {
    {0, "Program AE"},
    {1, "Aperture-priority AE"},
    {2, "Shutter speed priority AE"},
    {3, "Manual"},
    {4, "Auto"},
    {5, "iAuto"},
    {6, "Superior Auto"},
    {7, "iAuto+"},
    {8, "Portrait"},
    {9, "Landscape"},
    {10, "Twilight"},
    {11, "Twilight Portrait"},
    {12, "Sunset"},
    {14, "Action (High speed)"},
    {16, "Sports"},
    {17, "Handheld Night Shot"},
    {18, "Anti Motion Blur"},
    {19, "High Sensitivity"},
    {21, "Beach"},
    {22, "Snow"},
    {23, "Fireworks"},
    {26, "Underwater"},
    {27, "Gourmet"},
    {28, "Pet"},
    {29, "Macro"},
    {30, "Backlight Correction HDR"},
    {33, "Sweep Panorama"},
    {36, "Background Defocus"},
    {37, "Soft Skin"},
    {42, "3D Image"},
    {43, "Cont. Priority AE"},
};

// DynamicRangeOptimizer of the blocks
constexpr TCodeText kDynamicRangeOptimizerBlock[] = {
    {0, "Off"}, {1, "Auto"}, {3, "Lv1"}, {4, "Lv2"}, {5, "Lv3"}, {6, "Lv4"}, {7, "Lv5"}, {8, "n/a"},
};

// ISO settings of the blocks
constexpr TCodeText kIsoSetting2010[] = {
    {0, "Auto"},    {5, "25"},     {8, "50"},      {9, "64"},      {10, "80"},     {11, "100"},
    {12, "125"},    {13, "160"},   {14, "200"},    {15, "250"},    {16, "320"},    {17, "400"},
    {18, "500"},    {19, "640"},   {20, "800"},    {21, "1000"},   {22, "1250"},   {23, "1600"},
    {24, "2000"},   {25, "2500"},  {26, "3200"},   {27, "4000"},   {28, "5000"},   {29, "6400"},
    {30, "8000"},   {31, "10000"}, {32, "12800"},  {33, "16000"},  {34, "20000"},  {35, "25600"},
    {38, "51200"},  {39, "64000"}, {41, "102400"}, {42, "128000"}, {43, "160000"}, {44, "204800"},
    {47, "409600"},
};

// E-mount lens types and adapters
constexpr TCodeText kLensType2[] = {
    {0, "Unknown E-mount lens or other lens"},
    {1, "Sony LA-EA1 or Sigma MC-11 Adapter"},
    {2, "Sony LA-EA2 Adapter"},
    {3, "Sony LA-EA3 Adapter"},
    {6, "Sony LA-EA4 Adapter"},
    {44, "Metabones Canon EF Smart Adapter"},
    {78, "Metabones Canon EF Smart Adapter Mark III or Other Adapter"},
    {184, "Metabones Canon EF Speed Booster Ultra"},
    {234, "Metabones Canon EF Smart Adapter Mark IV"},
    {239, "Metabones Canon EF Speed Booster"},
    {32784, "Sony E 16mm F2.8"},
    {32785, "Sony E 18-55mm F3.5-5.6 OSS"},
    {32786, "Sony E 55-210mm F4.5-6.3 OSS"},
    {32787, "Sony E 18-200mm F3.5-6.3 OSS"},
    {32788, "Sony E 30mm F3.5 Macro"},
    {32789, "Sony E 24mm F1.8 ZA or Samyang AF 50mm F1.4 FE"},
    {32790, "Sony E 50mm F1.8 OSS or Samyang AF 14mm F2.8 FE"},
    {32791, "Sony E 16-70mm F4 ZA OSS"},
    {32792, "Sony E 10-18mm F4 OSS"},
    {32793, "Sony E PZ 16-50mm F3.5-5.6 OSS"},
    {32794, "Sony FE 35mm F2.8 ZA"},
    {32795, "Sony FE 24-70mm F4 ZA OSS"},
    {32796, "Sony FE 85mm F1.8"},
    {32797, "Sony E 18-200mm F3.5-6.3 OSS LE"},
    {32798, "Sony E 20mm F2.8"},
    {32799, "Sony E 35mm F1.8 OSS"},
    {32800, "Sony E PZ 18-105mm F4 G OSS"},
    {32801, "Sony FE 12-24mm F4 G"},
    {32802, "Sony FE 90mm F2.8 Macro G OSS"},
    {32803, "Sony E 18-50mm F4-5.6"},
    {32804, "Sony FE 24mm F1.4 GM"},
    {32805, "Sony FE 24-105mm F4 G OSS"},
    {32807, "Sony E PZ 18-200mm F3.5-6.3 OSS"},
    {32808, "Sony FE 55mm F1.8 ZA"},
    {32810, "Sony FE 70-200mm F4 G OSS"},
    {32811, "Sony FE 16-35mm F4 ZA OSS"},
    {32812, "Sony FE 50mm F2.8 Macro"},
    {32813, "Sony FE 28-70mm F3.5-5.6 OSS"},
    {32814, "Sony FE 35mm F1.4 ZA"},
    {32815, "Sony FE 24-240mm F3.5-6.3 OSS"},
    {32816, "Sony FE 28mm F2"},
    {32817, "Sony FE PZ 28-135mm F4 G OSS"},
    {32819, "Sony FE 100mm F2.8 STF GM OSS"},
    {32820, "Sony E PZ 18-110mm F4 G OSS"},
    {32821, "Sony FE 24-70mm F2.8 GM"},
    {32822, "Sony FE 50mm F1.4 ZA"},
    {32823, "Sony FE 85mm F1.4 GM"},
    {32824, "Sony FE 50mm F1.8"},
    {32826, "Sony FE 21mm F2.8 (SEL28F20 + SEL075UWC)"},
    {32827, "Sony FE 16mm F3.5 Fisheye (SEL28F20 + SEL057FEC)"},
    {32828, "Sony FE 70-300mm F4.5-5.6 G OSS"},
    {32829, "Sony FE 100-400mm F4.5-5.6 GM OSS"},
    {32830, "Sony FE 70-200mm F2.8 GM OSS"},
    {32831, "Sony FE 16-35mm F2.8 GM"},
    {32848, "Sony FE 400mm F2.8 GM OSS"},
    {32849, "Sony E 18-135mm F3.5-5.6 OSS"},
    {32850, "Sony FE 135mm F1.8 GM"},
    {32851, "Sony FE 200-600mm F5.6-6.3 G OSS"},
    {32852, "Sony FE 600mm F4 GM OSS"},
    {32853, "Sony E 16-55mm F2.8 G"},
    {32854, "Sony E 70-350mm F4.5-6.3 G OSS"},
    {32858, "Sony FE 35mm F1.8"},
    {33072, "Sony FE 70-200mm F2.8 GM OSS + 1.4X Teleconverter"},
    {33073, "Sony FE 70-200mm F2.8 GM OSS + 2X Teleconverter"},
    {33076, "Sony FE 100mm F2.8 STF GM OSS (macro mode)"},
    {33077, "Sony FE 100-400mm F4.5-5.6 GM OSS + 1.4X Teleconverter"},
    {33078, "Sony FE 100-400mm F4.5-5.6 GM OSS + 2X Teleconverter"},
    {33079, "Sony FE 400mm F2.8 GM OSS + 1.4X Teleconverter"},
    {33080, "Sony FE 400mm F2.8 GM OSS + 2x Teleconverter"},
    {33081, "Sony FE 200-600mm F5.6-6.3 G OSS + 1.4X Teleconverter"},
    {33082, "Sony FE 200-600mm F5.6-6.3 G OSS + 2X Teleconverter"},
    {33083, "Sony FE 600mm F4 GM OSS + 1.4X Teleconverter"},
    {33084, "Sony FE 600mm F4 GM OSS + 2X Teleconverter"},
    {49201, "Zeiss Touit 12mm F2.8"},
    {49202, "Zeiss Touit 32mm F1.8"},
    {49203, "Zeiss Touit 50mm F2.8 Macro"},
    {49216, "Zeiss Batis 25mm F2"},
    {49217, "Zeiss Batis 85mm F1.8"},
    {49218, "Zeiss Batis 18mm F2.8"},
    {49219, "Zeiss Batis 135mm F2.8"},
    {49220, "Zeiss Batis 40mm F2 CF"},
    {49232, "Zeiss Loxia 50mm F2"},
    {49233, "Zeiss Loxia 35mm F2"},
    {49234, "Zeiss Loxia 21mm F2.8"},
    {49235, "Zeiss Loxia 85mm F2.4"},
    {49236, "Zeiss Loxia 25mm F2.4"},
    {49457, "Tamron 28-75mm F2.8 Di III RXD"},
    {49458, "Tamron 17-28mm F2.8 Di III RXD"},
    {49459, "Tamron 35mm F2.8 Di III OSD M1:2"},
    {49460, "Tamron 24mm F2.8 Di III OSD M1:2"},
    {49461, "Tamron 20mm F2.8 Di III OSD M1:2"},
    {49712, "Tokina FiRIN 20mm F2 FE AF"},
    {49713, "Tokina FiRIN 100mm F2.8 FE MACRO"},
    {50480, "Sigma 30mm F1.4 DC DN | C"},
    {50481, "Sigma 50mm F1.4 DG HSM | A + MC-11"},
    {50482, "Sigma 18-300mm F3.5-6.3 DC MACRO OS HSM | C + MC-11"},
    {50483, "Sigma 18-35mm F1.8 DC HSM | A + MC-11"},
    {50484, "Sigma 24-35mm F2 DG HSM | A + MC-11"},
    {50485, "Sigma 24mm F1.4 DG HSM | A + MC-11"},
    {50486, "Sigma 150-600mm F5-6.3 DG OS HSM | C + MC-11"},
    {50487, "Sigma 20mm F1.4 DG HSM | A + MC-11"},
    {50488, "Sigma 35mm F1.4 DG HSM | A + MC-11"},
    {50489, "Sigma 150-600mm F5-6.3 DG OS HSM | S + MC-11"},
    {50490, "Sigma 120-300mm F2.8 DG OS HSM | S + MC-11"},
    {50492, "Sigma 24-105mm F4 DG OS HSM | A + MC-11"},
    {50493, "Sigma 17-70mm F2.8-4 DC MACRO OS HSM | C + MC-11"},
    {50495, "Sigma 50-100mm F1.8 DC HSM | A + MC-11"},
    {50499, "Sigma 85mm F1.4 DG HSM | A"},
    {50501, "Sigma 100-400mm F5-6.3 DG OS HSM | C + MC-11"},
    {50503, "Sigma 16mm F1.4 DC DN | C"},
    {50507, "Sigma 105mm F1.4 DG HSM | A"},
    {50508, "Sigma 56mm F1.4 DC DN | C"},
    {50512, "Sigma 70-200mm F2.8 DG OS HSM | S"},
    {50513, "Sigma 70mm F2.8 DG MACRO | A"},
    {50514, "Sigma 45mm F2.8 DG DN | C"},
    {50515, "Sigma 35mm F1.2 DG DN | A"},
    {50516, "Sigma 14-24mm F2.8 DG DN | A"},
    {50992, "Voigtlander SUPER WIDE-HELIAR 15mm F4.5 III"},
    {50993, "Voigtlander HELIAR-HYPER WIDE 10mm F5.6"},
    {50994, "Voigtlander ULTRA WIDE-HELIAR 12mm F5.6 III"},
    {50995, "Voigtlander MACRO APO-LANTHAR 65mm F2 Aspherical"},
    {50996, "Voigtlander NOKTON 40mm F1.2 Aspherical"},
    {50997, "Voigtlander NOKTON classic 35mm F1.4"},
    {50998, "Voigtlander MACRO APO-LANTHAR 110mm F2.5"},
    {50999, "Voigtlander COLOR-SKOPAR 21mm F3.5 Aspherical"},
    {51000, "Voigtlander NOKTON 50mm F1.2 Aspherical"},
    {51001, "Voigtlander NOKTON 21mm F1.4 Aspherical"},
    {51002, "Voigtlander APO-LANTHAR 50mm F2 Aspherical"},
    {51504, "Samyang AF 50mm F1.4"},
    {51505, "Samyang AF 14mm F2.8 FE or Samyang AF 35mm F2.8 FE"},
    {51507, "Samyang AF 35mm F1.4"},
    {51508, "Samyang AF 45mm F1.8"},
    {51510, "Samyang AF 18mm F2.8"},
};

// 0x2009 HighISONoiseReduction
constexpr TCodeText kHighISONoiseReduction[] = {
    {0, "Off"}, {1, "Low"}, {2, "Normal"}, {3, "High"}, {256, "Auto"}, {65535, "n/a"},
};

// 0x200A HDR, low half: the level
constexpr TCodeText kHDRLevel[] = {
    {0, "Off"},     {1, "Auto"},    {16, "1.0 EV"}, {17, "1.5 EV"}, {18, "2.0 EV"},
    {19, "2.5 EV"}, {20, "3.0 EV"}, {21, "3.5 EV"}, {22, "4.0 EV"}, {23, "4.5 EV"},
    {24, "5.0 EV"}, {25, "5.5 EV"}, {26, "6.0 EV"},
};

// 0x200A HDR, high half: the outcome
constexpr TCodeText kHDRResult[] = {
    {0, ", uncorrected Image"},
    {1, "HDR image (good)"},
    {2, "HDR image (fail 1)"},
    {3, "HDR image (fail 2)"},
};

// 0x2011 VignettingCorrection, 0x2012 LateralChromaticAberration,
// 0x2013 DistortionCorrectionSetting
constexpr TCodeText kLensCorrection[] = {{0, "Off"}, {2, "Auto"}, {0xFFFFFFFF, "n/a"}};

// 0xB000 FileFormat, the four bytes read as one big-endian number
constexpr TCodeText kFileFormat[] = {
    {0x00000002, "JPEG"},      {0x01000000, "SR2"},       {0x02000000, "ARW 1.0"},
    {0x03000000, "ARW 2.0"},   {0x03010000, "ARW 2.1"},   {0x03020000, "ARW 2.2"},
    {0x03030000, "ARW 2.3"},   {0x03030100, "ARW 2.3.1"}, {0x03030200, "ARW 2.3.2"},
    {0x03030300, "ARW 2.3.3"}, {0x03030500, "ARW 2.3.5"}, {0x04000000, "ARW 4.0"},
};

// 0xB04A SequenceNumber; other values are the number itself
constexpr TCodeText kSequenceNumber[] = {{0, "Single"}, {65535, "n/a"}};

// Two BCD digits of a lens-specification byte.
int bcd(quint8 byte)
{
    return (byte >> 4) * 10 + (byte & 0x0F);
}

// "W x H" of a size stored as height and width.
QString sizeText(const QList<quint32> &values)
{
    if (values.size() != 2)
        return QStringLiteral("unbekannt");
    return QStringLiteral("%1x%2").arg(values[1]).arg(values[0]);
}

// Celsius of a Fahrenheit value, cut (not rounded) to two decimals.
double celsiusCut(qint64 fahrenheit)
{
    const double celsius = double(fahrenheit - 32) * 5.0 / 9.0;
    return double(qint64(celsius * 100.0)) / 100.0;
}

} // namespace

QString TM9File::mnSony_0x0102_QualityAsString() const
{
    return lookup(kQuality, m_sony.quality, "unbekannt");
}

QString TM9File::mnSony_0x0105_TeleconverterAsString() const
{
    return lookup(kTeleconverter, m_sony.teleconverter, "unbekannt");
}

QString TM9File::mnSony_0x0115_WhiteBalanceAsString() const
{
    return lookup(kWhiteBalance0115, m_sony.whiteBalance, "unbekannt");
}

QString TM9File::mnSony_0x2008_LongExposureNoiseReductionAsString() const
{
    return lookup(kLongExposureNoiseReduction, m_sony.longExposureNoiseReduction, "unbekannt");
}

QString TM9File::mnSony_0x200B_MultiFrameNoiseReductionAsString() const
{
    return lookup(kMultiFrameNoiseReduction, m_sony.multiFrameNoiseReduction & 0xFF, "unbekannt");
}

QString TM9File::mnSony_0x200E_PictureEffectAsString() const
{
    return lookup(kPictureEffect, m_sony.pictureEffect & 0xFF, "unbekannt");
}

QString TM9File::mnSony_0x200F_SoftSkinEffectAsString() const
{
    return lookup(kSoftSkinEffect, m_sony.softSkinEffect, "unbekannt");
}

QString TM9File::mnSony_0x2016_AutoPortraitFramedAsString() const
{
    return lookup(kAutoPortraitFramed, m_sony.autoPortraitFramed, "unbekannt");
}

QString TM9File::mnSony_0x2017_FlashActionAsString() const
{
    return lookup(kFlashAction, m_sony.flashAction, "unbekannt");
}

QString TM9File::mnSony_0x201A_ElectronicFrontCurtainShutterAsString() const
{
    return lookup(kElectronicFrontCurtainShutter, m_sony.electronicFrontCurtainShutter,
                  "unbekannt");
}

QString TM9File::mnSony_0x201B_FocusModeAsString() const
{
    return lookup(kFocusMode, m_sony.focusMode, "unbekannt");
}

QString TM9File::mnSony_0x201C_AFAreaModeSettingAsString() const
{
    return lookup(kAFAreaModeSetting, m_sony.afAreaModeSetting, "unbekannt");
}

QString TM9File::mnSony_0x201E_AFZoneSelectedAsString() const
{
    return lookup(kAFZoneSelected, m_sony.afPointSelected, "unbekannt");
}

QString TM9File::mnSony_0x2021_AFTrackingAsString() const
{
    return lookup(kAFTracking, m_sony.afTracking, "unbekannt");
}

QString TM9File::mnSony_0x2023_MultiFrameNREffectAsString() const
{
    return lookup(kMultiFrameNREffect, m_sony.multiFrameNREffect, "unbekannt");
}

QString TM9File::mnSony_0x2028_VariableLowPassFilterAsString() const
{
    return lookup(kVariableLowPassFilter, m_sony.variableLowPassFilter, "unbekannt");
}

QString TM9File::mnSony_0x2029_RawFileTypeAsString() const
{
    return lookup(kRawFileType, m_sony.rawFileType, "n/a");
}

QString TM9File::mnSony_0x202B_PrioritySetInAWBAsString() const
{
    return lookup(kPrioritySetInAWB, m_sony.prioritySetInAWB, "n/a");
}

QString TM9File::mnSony_0xB001_SonyModelIDAsString() const
{
    return lookup(kSonyModelID, m_sony.sonyModelID, "unbekannt");
}

QString TM9File::mnSony_0xB023_SceneModeAsString() const
{
    return lookup(kSceneMode, m_sony.sceneMode, "unbekannt");
}

QString TM9File::mnSony_0xB024_ZoneMatchingAsString() const
{
    return lookup(kZoneMatching, m_sony.zoneMatching, "unbekannt");
}

QString TM9File::mnSony_0xB025_DynamicRangeOptimizerAsString() const
{
    return lookup(kDynamicRangeOptimizerB025, m_sony.dynamicRangeOptimizer, "unbekannt");
}

QString TM9File::mnSony_0xB026_ImageStabilizationAsString() const
{
    return lookup(kImageStabilization, m_sony.imageStabilization, "unbekannt");
}

QString TM9File::mnSony_0xB029_ColorModeAsString() const
{
    return lookup(kColorMode, m_sony.colorMode, "unbekannt");
}

QString TM9File::mnSony_0xB041_ExposureModeAsString() const
{
    return lookup(kExposureMode, m_sony.exposureMode, "unbekannt");
}

QString TM9File::mnSony_0xB047_JPEGQualityAsString() const
{
    return lookup(kJPEGQuality, m_sony.jpegQuality, "unbekannt");
}

QString TM9File::mnSony_0xB048_FlashLevelAsString() const
{
    return lookup(kFlashLevel, m_sony.flashLevel, "unbekannt");
}

QString TM9File::mnSony_0xB049_ReleaseModeAsString() const
{
    return lookup(kReleaseMode, m_sony.releaseMode, "unbekannt");
}

QString TM9File::mnSony_0xB04B_AntiBlurAsString() const
{
    return lookup(kAntiBlur, m_sony.antiBlur, "unbekannt");
}

QString TM9File::mnSony_0xB04F_DynamicRangeOptimizerAsString() const
{
    return lookup(kDynamicRangeOptimizerB04F, m_sony.dynamicRangeOptimizer2, "unbekannt");
}

QString TM9File::mnSony_0xB050_HighISONoiseReduction2AsString() const
{
    return lookup(kHighISONoiseReduction2, m_sony.highISONoiseReduction2, "unbekannt");
}

QString TM9File::mnSony_0xB052_IntelligentAutoAsString() const
{
    return lookup(kIntelligentAuto, m_sony.intelligentAuto, "unbekannt");
}

QString TM9File::mnSony_0xB054_WhiteBalanceAsString() const
{
    return lookup(kWhiteBalanceB054, m_sony.whiteBalance2, "unbekannt");
}

QString TM9File::mnSony_ReleaseMode2(unsigned short code)
{
    return lookup(kReleaseMode2, code, "unbekannt");
}

QString TM9File::mnSony_PictureEffect2(unsigned short code)
{
    return lookup(kPictureEffect2, code, "unbekannt");
}

QString TM9File::mnSony_ExposureProgram3(unsigned short code)
{
    return lookup(kExposureProgram3, code, "unbekannt");
}

QString TM9File::mnSony_DynamicRangeOptimizer(unsigned short code)
{
    return lookup(kDynamicRangeOptimizerBlock, code, "unbekannt");
}

QString TM9File::isoSetting2010(int code)
{
    return lookup(kIsoSetting2010, code, "unbekannt");
}

QString TM9File::mnSony_LensType2(unsigned short code)
{
    return lookup(kLensType2, code, "unbekannt");
}

double TM9File::mnSony_0x0104_FlashExposureCompNumAsReal() const
{
    const TSRational &r = m_sony.flashExposureComp;
    return r.den == 0 ? 0.0 : double(r.num) / double(r.den);
}

QString TM9File::mnSony_0x0104_FlashExposureCompNumAsString() const
{
    if (m_sony.flashExposureComp.den == 0)
        return QStringLiteral("unbekannt");
    return QString::number(mnSony_0x0104_FlashExposureCompNumAsReal(), 'f', 2);
}

QString TM9File::mnSony_0x2009_HighISONoiseReductionAsString() const
{
    return lookup(kHighISONoiseReduction, m_sony.highISONoiseReduction, "unbekannt");
}

QString TM9File::mnSony_0x200A_HDRAsString() const
{
    const QString level = lookup(kHDRLevel, m_sony.hdr & 0xFFFF, "unbekannt");
    const QString result = lookup(kHDRResult, m_sony.hdr >> 16, "unbekannt");
    // The uncorrected outcome brings its own separator.
    return result.startsWith(QLatin1Char(',')) ? level + result
                                               : level + QStringLiteral(", ") + result;
}

QString TM9File::mnSony_0x2011_VignettingCorrectionAsString() const
{
    return lookup(kLensCorrection, m_sony.vignettingCorrection, "unbekannt");
}

QString TM9File::mnSony_0x2012_LateralChromaticAberationAsString() const
{
    return lookup(kLensCorrection, m_sony.lateralChromaticAberration, "unbekannt");
}

QString TM9File::mnSony_0x2013_DistortionCorrectionSettingAsString() const
{
    return lookup(kLensCorrection, m_sony.distortionCorrectionSetting, "unbekannt");
}

QString TM9File::mnSony_0x201D_FlexibleSpotPositionAsString() const
{
    return QStringLiteral("%1, %2")
        .arg(m_sony.flexibleSpotPosition[0])
        .arg(m_sony.flexibleSpotPosition[1]);
}

QString TM9File::mnSony_0x2022_FocalPlaneAFPointsUsedAsString() const
{
    QStringList points;
    for (const quint8 point : m_sony.focalPlaneAFPointsUsed) {
        if (point != 0)
            points.append(QString::number(point));
    }
    return points.isEmpty() ? QStringLiteral("(none)") : points.join(QLatin1Char(' '));
}

QString TM9File::mnSony_0x2027_FocusLocationAsString() const
{
    const auto &l = m_sony.focusLocation;
    return QStringLiteral("%1 %2 %3 %4").arg(l[0]).arg(l[1]).arg(l[2]).arg(l[3]);
}

QString TM9File::mnSony_0xB000_FileFormatAsString() const
{
    const auto &f = m_sony.fileFormat;
    const quint32 code = quint32(f[0]) << 24 | quint32(f[1]) << 16 | quint32(f[2]) << 8 | f[3];
    return lookup(kFileFormat, code, "unbekannt");
}

QString TM9File::mnSony_0xB02A_LensSpecAsString() const
{
    // Flags, short and long focal length (two BCD bytes each), the apertures
    // at both ends (BCD, tenths) and flags again.
    const QList<quint8> &s = m_sony.lensSpec;
    if (s.size() < 8)
        return QStringLiteral("unbekannt");
    const int shortFocal = bcd(s[1]) * 100 + bcd(s[2]);
    const int longFocal = bcd(s[3]) * 100 + bcd(s[4]);
    const QString focal = longFocal > shortFocal
                              ? QStringLiteral("%1-%2mm").arg(shortFocal).arg(longFocal)
                              : QStringLiteral("%1mm").arg(shortFocal);
    const double wide = bcd(s[5]) / 10.0;
    const double tele = bcd(s[6]) / 10.0;
    const QString aperture = tele > wide ? QStringLiteral("F%1-%2").arg(wide).arg(tele)
                                         : QStringLiteral("F%1").arg(wide);
    return focal + QLatin1Char(' ') + aperture;
}

QString TM9File::mnSony_0xB02B_FullImageSizeAsString() const
{
    return sizeText(m_sony.fullImageSize);
}

QString TM9File::mnSony_0xB02C_PreviewImageSizeAsString() const
{
    return sizeText(m_sony.previewImageSize);
}

QString TM9File::mnSony_0xB04A_SequenceNumberAsString() const
{
    const QString text = lookup(kSequenceNumber, m_sony.sequenceNumber, "");
    return text.isEmpty() ? QString::number(m_sony.sequenceNumber) : text;
}

double TM9File::fahrenheit2Celsius(int f)
{
    return celsiusCut(f);
}

double TM9File::mnSony_0x09406_BatteryTemperatureCelsius() const
{
    return celsiusCut(qint64(m_sony.batteryTemperature));
}
