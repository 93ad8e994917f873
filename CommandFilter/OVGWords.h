// What the words of a status document mean in a ticket.
#pragma once

#include "CommandFilter/WordTable.h"

namespace orvan {

inline constexpr std::array<WordPair, 6> kTrayWords{{
    {"Tray 1 (MPT)", "Tray1"},
    {"Tray 1", "Tray1"},
    {"Tray 2", "Tray2"},
    {"Tray 3", "Tray3"},
    {"Tray 4", "Tray4"},
    {"Tray 5", "Tray5"},
}};
static_assert(hasUniqueKeys(kTrayWords));

inline constexpr std::array<WordPair, 7> kStatusWords{{
    {"Unknown", "Unspecified"},
    {"Full", "Full"},
    {"OK", "OK"},
    {"Not Full", "Not Full"},
    {"NearEmpty", "NearEmpty"},
    {"Low", "Low"},
    {"Empty", "Empty"},
}};
static_assert(hasUniqueKeys(kStatusWords));

inline constexpr std::array<WordPair, 4> kSupplyWords{{
    {"Cyan Toner", "CyanLevel"},
    {"Magenta Toner", "MagentaLevel"},
    {"Yellow Toner", "YellowLevel"},
    {"Black Toner", "BlackLevel"},
}};
static_assert(hasUniqueKeys(kSupplyWords));

inline constexpr std::array<WordPair, 28> kTypeWords{{
    {"Plain Paper", "Plain"},
    {"Heavy Plain Paper", "HeavyPlain"},
    {"Transparency", "Transparency"},
    {"Thin Card Stock", "LightCard"},
    {"Card Stock", "Card"},
    {"Thick Card Stock", "HeavyCard"},
    {"LetterheadPlain", "LetterheadPlain"},
    {"Thin Glossy Paper", "GlossyLightCard"},
    {"Glossy Paper", "GlossyCard"},
    {"Thick Glossy Paper", "GlossyHeavyCard"},
    {"LightGlossyReloaded", "GlossyCardReloaded"},
    {"GlossyHeavyCardReloaded", "GlossyHeavyCardReloaded"},
    {"Preprinted", "PreprintedPlain"},
    {"PrepunchedPlain", "PrepunchedPlain"},
    {"Colored Paper", "ColoredPlain"},
    {"RecycledPlain", "RecycledPlain"},
    {"Special", "Other"},
    {"Custom Type 1", "CustomType1"},
    {"Custom Type 2", "CustomType2"},
    {"Custom Type 3", "CustomType3"},
    {"Custom Type 4", "CustomType4"},
    {"Custom Type 5", "CustomType5"},
    {"Extra Thick Card Stock", "ExtraHeavyCard"},
    {"ExtraHeavyCardReloaded", "ExtraHeavyCardReloaded"},
    {"2nd Side", "PlainReloaded"},
    {"Bond", "Bond"},
    {"Gloss Coating Reloaded", "GlossyLightCardReloaded"},
    {"Light Plain Paper", "LightPlain"},
}};
static_assert(hasUniqueKeys(kTypeWords));

inline constexpr std::array<WordPair, 59> kSizeWords{{
    {"Letter", "Letter"},
    {"Legal", "Legal"},
    {"Tabloid", "Tabloid"},
    {"Tabloid Extra", "TabloidExtra"},
    {"Statement", "Statement"},
    {"Executive", "Executive"},
    {"A6", "A6"},
    {"A5", "A5"},
    {"A4", "A4"},
    {"A3", "A3"},
    {"US Folio", "FanFoldGermanLegal"},
    {"Letter Tab (9 x 11\")", "LetterTab"},
    {"11 x 15\"", "11x15"},
    {"B5 JIS", "B5"},
    {"B4 JIS", "B4"},
    {"JIS B6 (128 x 182 mm)", "B6"},
    {"Oversized A4 (223 x 297 mm)", "OversizedA4"},
    {"Postcard (100 x 148 mm)", "Postcard"},
    {"ISO B5", "ISOB5"},
    {"SRA3", "SRA3"},
    {"#10 Commercial Envelope", "Env10"},
    {"#9 Commercial Envelope", "Env9"},
    {"Monarch Envelope", "EnvMonarch"},
    {"A7 Envelope", "EnvA7"},
    {"B5 Envelope", "EnvB5"},
    {"C4 Envelope", "EnvC4"},
    {"C5 Envelope", "EnvC5"},
    {"C6 Envelope", "EnvC6"},
    {"DL Envelope", "EnvDL"},
    {"#6 3/4 Envelope", "EnvPersonal"},
    {"Choukei 3 Gou", "EnvChou3"},
    {"Choukei 4 Gou", "EnvChou4"},
    {"Index Card", "IndexCard"},
    {"#5 1/2 Envelope", "Env5"},
    {"6x9 Envelope", "Env6x9"},
    {"Post Card(4 x 6\")", "PostCard4x6"},
    {"Post Card(4.5 x 6\")", "PostCard4.5x6"},
    {"5 x 7\"", "5x7"},
    {"8 x 10\"", "8x10"},
    {"8x10.5\"", "8x10.5"},
    {"FanFoldGermanLegal\"", "FanFoldGermanLegal"},
    {"9 x 11\"", "9x11"},
    {"215x315\"", "215x315"},
    {"5.5 x 7\"", "5.5x7"},
    {"Post Card(6 x 9\")", "Postcard6x9"},
    {"12 x 19\"", "12x19"},
    {"12.6 x 19.2\"", "12.6x19.2"},
    {"13 x 18\"", "13x18"},
    {"13 x 19\"", "13x19"},
    {"Postcard (148 x 200 mm)", "DoublePostcardRotated"},
    {"8K (267 x 388 mm)", "8K267x388"},
    {"8K (270 x 390 mm)", "8K270x390"},
    {"16K (194 x 267 mm)", "16K194x267"},
    {"16K (195 x 270 mm)", "16K195x270"},
    {"226 x 310 mm", "226x310"},
    {"310 x 432 mm", "310x432"},
    {"328 x 453 mm", "328x453"},
    {"Envelope (120 x 235 mm)", "EnvChou3"},
    {"Custom", "Custom"},
}};
static_assert(hasUniqueKeys(kSizeWords));

// How full a tray is, in per cent.
inline constexpr std::array<WordRow<int>, 6> kTrayLevels{{
    {"Full", 100},
    {"OK", 90},
    {"Not Full", 60},
    {"NearEmpty", 30},
    {"Low", 10},
    {"Empty", 0},
}};
static_assert(hasUniqueKeys(kTrayLevels));

} // namespace orvan
