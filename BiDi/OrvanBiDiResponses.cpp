// Collecting the printer's answers.
#include "BiDi/OrvanBiDi.h"

#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"
#include "Platform/Guarded.h"
#include "Platform/PMPrinter.h"
#include "Platform/PrintServerConnection.h"

#include <unistd.h>

namespace orvan {
namespace {

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using OpenPPD = std::unique_ptr<ppd_file_t, ClosePPD>;

// The queue's PPD as the print server has it now; null when it cannot be had. Leaves no file behind.
OpenPPD fetchPPD(platform::PMPrinter& printer) {
    const platform::PrintServerConnection connection(printer.patience());
    const auto file = connection.fetchPPD(platform::PMPrinterGetID(printer));
    if (file.path.empty()) return nullptr;
    OpenPPD ppd(ppdOpenFile(file.path.c_str()));
    if (file.isTemporary) ::unlink(file.path.c_str());
    return ppd;
}

} // namespace

void OrvanBiDi::processCommandResponsesWithPPD() {
    const auto queue = printer();
    if (queue == nullptr) return;
    if (const OpenPPD ppd = fetchPPD(*queue)) deliverResponses(ppd.get(), ppdx_get_chunk_ppd);
}

void OrvanBiDi::processCommandResponsesWithTaskOutput(std::string_view output) {
    EntryDictionary entries = entriesInTaskOutput(output);
    deliverResponses(&entries, ppdx_get_chunk_nsdictionary);
}

void OrvanBiDi::deliverResponses(void* source, ChunkGetter getter) {
    // A copy, as the delegate may set others.
    const CommandList commands = _supportedCommands.value_or(CommandList());
    for (const std::string& command : commands) {
        std::size_t size = 0;
        PpdxData data = ppdxReadData(source, command.c_str(), getter, &size);
        if (data == nullptr) continue;
        const auto response = platform::PropertyList::read({data.get(), size});
        data.reset();
        if (!response) continue;
        // The delegate may drop this channel's last reference to it.
        if (const auto delegate = delegate_)
            platform::guarded("printer answer", [&] { delegate->receivedBiDiResponse(*response); });
    }
}

} // namespace orvan
