// The panel created and first shown, as the print dialog does, for a paper type of more and more choices.
#include "Benchmarks/Paired.h"
#include "Benchmarks/PaperTypesPPD.h"
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "PrintDialog/Host/PanelSession.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace orvan {
namespace {

std::size_t paperTypesShown(PanelSession& session) {
    auto* const popUp = dynamic_cast<platform::PopUpButton*>(
        session.panel().panelView()->viewWithTag(kOptionRows.front().popUpTag()));
    const bool hasSelection = popUp != nullptr && popUp->indexOfSelectedItem() >= 0;
    return hasSelection ? popUp->items().size() : 0;
}

// Opening the PPD and ending the panel are not counted; both are done for each iteration.
void showPanel(benchmark::State& state) {
    platform::Failure error;
    const auto bundle = platform::Bundle::open(paperOptionsBundleFolder(), error);
    const std::filesystem::path file = writePPDWithPaperTypes(static_cast<int>(state.range(0)));
    if (bundle == nullptr) state.SkipWithError(error->c_str());
    while (state.KeepRunning()) {
        auto ppd = DialogPPD::open(file, error);
        const double start = processorSeconds();
        const auto session =
            ppd != nullptr ? PanelSession::create(bundle, std::move(ppd), nullptr, error) : nullptr;
        if (session != nullptr) session->willShow();
        state.SetIterationTime(processorSeconds() - start);
        if (session == nullptr || paperTypesShown(*session) != static_cast<std::size_t>(state.range(0)))
            state.SkipWithError(("the panel is not there or incomplete: " + *error).c_str());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}
BENCHMARK(showPanel)->RangeMultiplier(10)->Range(10, 10'000)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orvan
