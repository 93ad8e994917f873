// Keywords of the printer, and the keywords of the printer's PPD that name the same.
#pragma once

#include "CommandFilter/WordTable.h"

namespace orvan {

inline constexpr std::array<WordPair, 21> kColorKeywords{{
    {"use-any", "Auto"},
    {"white", "White"},
    {"blue", "Blue"},
    {"yellow", "Yellow"},
    {"green", "Green"},
    {"pink", "Pink"},
    {"no-color", "Clear"},
    {"ivory", "Ivory"},
    {"gray", "Gray"},
    {"buff", "Buff"},
    {"goldenrod", "Goldenrod"},
    {"red", "Red"},
    {"orange", "Orange"},
    {"other", "Other"},
    {"custom1", "CustomColor1"},
    {"custom2", "CustomColor2"},
    {"custom3", "CustomColor3"},
    {"custom4", "CustomColor4"},
    {"custom5", "CustomColor5"},
    {"custom6", "CustomColor6"},
    {"custom7", "CustomColor7"},
}};
static_assert(hasUniqueKeys(kColorKeywords) && hasUniqueValues(kColorKeywords));

inline constexpr std::array<WordPair, 63> kTypeKeywords{{
    {"use-any", "Auto"},
    {"other", "Other"},
    {"transparency", "Transparency"},
    {"envelope", "Envelope"},
    {"stationery-letterhead", "LetterheadPlain"},
    {"stationery-pre-printed", "PreprintedPlain"},
    {"stationery-recycled", "RecycledPlain"},
    {"standard", "Recycled"},
    {"stationery-pre-punched", "PrepunchedPlain"},
    {"cardstock-pre-punched", "HolePunchedCard"},
    {"cardstock-lightweight-pre-punched", "LightweightHolePunchedCard"},
    {"cardstock-heavyweight-pre-punched", "HeavyweightHolePunchedCard"},
    {"stationery-lightweight", "LightPlain"},
    {"stationery", "Plain"},
    {"stationery-reloaded", "PlainReloaded"},
    {"stationery-heavyweight", "HeavyPlain"},
    {"stationery-heavyweight-reloaded", "HeavyPlainReloaded"},
    {"stationery-colored", "ColoredPlain"},
    {"stationery-rough-surface", "RoughPlain"},
    {"labels", "Labels"},
    {"labels-heavyweight", "HeavyLabels"},
    {"labels-extra-heavyweight", "ExtraHeavyLabels"},
    {"cardstock-postcard", "Postcard"},
    {"cardstock-lightweight", "LightCard"},
    {"cardstock-lightweight-reloaded", "LightCardReloaded"},
    {"stationery-glossy", "Glossy"},
    {"stationery-glossy-reloaded", "GlossyReloaded"},
    {"cardstock-lightweight-glossy", "GlossyLightCard"},
    {"cardstock-lightweight-glossy-reloaded", "GlossyLightCardReloaded"},
    {"cardstock", "Card"},
    {"cardstock-reloaded", "CardReloaded"},
    {"cardstock-glossy", "GlossyCard"},
    {"cardstock-glossy-reloaded", "GlossyCardReloaded"},
    {"cardstock-heavyweight", "HeavyCard"},
    {"cardstock-heavyweight-reloaded", "HeavyCardReloaded"},
    {"cardstock-heavyweight-glossy", "GlossyHeavyCard"},
    {"cardstock-heavyweight-glossy-reloaded", "GlossyHeavyCardReloaded"},
    {"cardstock-extra-heavyweight", "ExtraHeavyCard"},
    {"cardstock-extra-heavyweight-reloaded", "ExtraHeavyCardReloaded"},
    {"cardstock-extra-heavyweight-glossy", "GlossyExtraHeavyCard"},
    {"cardstock-extra-heavyweight-glossy-reloaded", "GlossyExtraHeavyCardReloaded"},
    {"photographic", "Photo"},
    {"bond", "Bond"},
    {"full-cut-tabs", "FullTabs"},
    {"full-cut-tabs-textured", "FullTabsEmbossed"},
    {"pre-cut-tabs", "PrecutTabs"},
    {"pre-cut-tabs-textured", "PrecutTabsEmbossed"},
    {"cardstock-pre-cut-tabs", "PrecutTabCard"},
    {"cardstock-heavyweight-pre-cut-tabs", "PrecutTabsHeavy"},
    {"cardstock-extra-heavyweight-pre-cut-tabs", "PrecutTabsExtraHeavy"},
    {"system-default", "SystemDefault"},
    {"ordered-textured", "OrderedEmbossed"},
    {"synthetic", "Synthetic"},
    {"textured", "Textured"},
    {"archival", "Archive"},
    {"fabric-transfer", "Transfer"},
    {"custom1", "CustomType1"},
    {"custom2", "CustomType2"},
    {"custom3", "CustomType3"},
    {"custom4", "CustomType4"},
    {"custom5", "CustomType5"},
    {"custom6", "CustomType6"},
    {"custom7", "CustomType7"},
}};
static_assert(hasUniqueKeys(kTypeKeywords) && hasUniqueValues(kTypeKeywords));

inline constexpr std::array<WordPair, 11> kTrayKeywords{{
    {"tray-1", "Tray1"},
    {"tray-2", "Tray2"},
    {"tray-3", "Tray3"},
    {"tray-4", "Tray4"},
    {"tray-5", "Tray5"},
    {"tray-6", "Tray6"},
    {"tray-7", "Tray7"},
    {"tray-8", "Tray8"},
    {"post-fuser-inserter", "PFI1"},
    {"envelope-tray", "Envelope1"},
    {"large-capacity", "HighCapacityTray1"},
}};
static_assert(hasUniqueKeys(kTrayKeywords) && hasUniqueValues(kTrayKeywords));

inline constexpr std::array<WordPair, 5> kCoatingTypeKeywords{{
    {"glossy", "Gloss"},
    {"high-gloss", "HighGloss"},
    {"semi-gloss", "SemiGloss"},
    {"satin", "Satin"},
    {"matte", "Matte"},
}};
static_assert(hasUniqueKeys(kCoatingTypeKeywords) && hasUniqueValues(kCoatingTypeKeywords));

} // namespace orvan
