// Collecting the printer's answers.
#include "BiDi/OrvanBiDi.h"

#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"
#include "Platform/Guarded.h"
#include "Platform/LogLimit.h"
#include "Platform/PMPrinter.h"
#include "Platform/SystemLog.h"

namespace orvan {

void OrvanBiDi::processCommandResponsesWithPPD() {
    const auto queue = printer();
    if (queue == nullptr) return;
    if (const platform::PPDRecord ppd = queue->takeFreshPPD())
        deliverResponses(ppd.get(), ppdx_get_chunk_ppd);
}

void OrvanBiDi::processCommandResponsesWithTaskOutput(std::string_view output) {
    EntryDictionary entries = entriesInTaskOutput(output);
    deliverResponses(&entries, ppdx_get_chunk_nsdictionary);
}

void OrvanBiDi::deliverResponses(void* source, ChunkGetter getter) {
    // A copy, as the delegate may set others.
    const CommandList commands = _supportedCommands.value_or(CommandList());
    const auto queue = printer();
    // Damage is for the log: the terminal is somebody else's.
    platform::LogLimit log(platform::systemLog);
    const PpdxMessages messages([&log](const std::string& line) { log.write(line); });
    std::size_t left = queue != nullptr ? queue->answerBudget() : kPpdxMaximumSize;
    for (const std::string& command : commands) {
        std::size_t size = 0;
        PpdxData data = ppdxReadData(source, command.c_str(), getter, &size, left);
        if (data == nullptr && size > left)
            platform::systemLog("the answer of printer " + platform::PMPrinterGetID(*queue) + " to " +
                                command + " is left out: its answers are too long for a print dialog");
        if (data == nullptr) continue;
        left -= size;
        const auto response = platform::PropertyList::read({data.get(), size});
        data.reset();
        if (!response) continue;
        // The delegate may drop this channel's last reference to it.
        if (const auto delegate = delegate_)
            platform::guarded("printer answer", [&] { delegate->receivedBiDiResponse(*response); });
    }
}

} // namespace orvan
