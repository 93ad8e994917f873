// The panel's option rows: one line of this table an option. To add an option, add its line here and its
// label and pop-up to Resources/PaperOptions.view.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvan {

// What an option that the PPD does not have does to its row.
enum class WhenAbsent {
    DisablePopUp, // the row stays where it is, its pop-up disabled
    HideRow,      // the row goes, and the panel gets one row pitch shorter
};

// Where the row stands.
enum class RowPlace {
    AsInResource,     // where the view resource puts it
    BelowLastVisible, // one pitch below the lowest row that is shown
};

struct OptionRowSpec {
    int row; // from 1, top to bottom
    const char* keyword;
    std::string_view outlet; // the pop-up's name in the view resource
    WhenAbsent whenAbsent;
    RowPlace place;

    constexpr std::int64_t labelTag() const { return row; }
    constexpr std::int64_t popUpTag() const { return 100 + row; }
};

inline constexpr std::array<OptionRowSpec, 7> kOptionRows{{
    {1, "MediaType", "paperTypesPopUp", WhenAbsent::DisablePopUp, RowPlace::AsInResource},
    {2, "Slipsheet", "separartionPagePopUp", WhenAbsent::DisablePopUp, RowPlace::AsInResource},
    {3, "OVNSlipSheetSource", "separationPageSourcePopUp", WhenAbsent::DisablePopUp, RowPlace::AsInResource},
    {4, "OVNLastPageSource", "lastpagePaperSourcePopUp", WhenAbsent::DisablePopUp, RowPlace::AsInResource},
    {5, "OVNMismatch", "mediaMismatchPolicyPopUp", WhenAbsent::DisablePopUp, RowPlace::AsInResource},
    {6, "OVNPrintingOptimization", "printingOptimizationPopUp", WhenAbsent::HideRow, RowPlace::AsInResource},
    {7, "OVNEdgeToEdge", "edgeToEdgePopUp", WhenAbsent::HideRow, RowPlace::BelowLastVisible},
}};

// The row whose list the printer's custom paper types are put into.
inline constexpr const OptionRowSpec& kPaperTypeRow = kOptionRows[0];

// Points from one row to the next.
inline constexpr double kRowPitch = 30;

// The lowest row that is always shown: what the rows below it are placed from.
inline constexpr const OptionRowSpec& kLastFixedRow = kOptionRows[4];
static_assert(
    kLastFixedRow.whenAbsent == WhenAbsent::DisablePopUp && kOptionRows[5].whenAbsent == WhenAbsent::HideRow);

// Rows are numbered in table order, so a row's index is its number less one.
static_assert([] {
    for (std::size_t i = 0; i < kOptionRows.size(); ++i)
        if (kOptionRows[i].row != static_cast<int>(i) + 1) return false;
    return true;
}());

} // namespace orvan
