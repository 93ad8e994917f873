#include "Orvan/PublishedPapers.h"

#include "Common/PublishedTitles.h"
#include "Orvan/Command.h"
#include "Platform/Input.h"
#include "Scheduler/PrintScheduler.h"

#include <functional>
#include <optional>

namespace orvan {
namespace {

using Change = std::function<std::optional<std::string>(const std::string& ppd, platform::Failure& error)>;

int changePPD(const std::string& queue, std::chrono::duration<double> time, const Change& change) {
    const auto patience = std::chrono::duration_cast<SchedulerWorker::Duration>(time);
    platform::Failure error;
    const auto file = fetchQueuePPDFile(queue, patience, error);
    if (file == nullptr) return cannot(*error);
    const auto ppd = platform::readFile(file->file().string(), error);
    if (!ppd) return cannot(*error);
    const auto changed = change(*ppd, error);
    if (!changed) return cannot("cannot change the PPD of queue " + queue + ": " + *error);
    if (*changed == *ppd) return kDone;
    if (setQueuePPD(queue, *changed, patience, error)) return kDone;
    return cannot("cannot change the PPD of queue " + queue + ": " + *error +
                  " (whoever may administer the scheduler can, as with \"sudo\")");
}

} // namespace

int publishPapers(
    const std::string& queue, const std::vector<CustomPaper>& papers, std::chrono::duration<double> time) {
    std::vector<PaperTitle> titles;
    titles.reserve(papers.size());
    for (const CustomPaper& paper : papers)
        titles.push_back({paper.type, paper.name});
    return changePPD(queue, time, [&titles](const std::string& ppd, platform::Failure& error) {
        return withPublishedTitles(ppd, titles, error);
    });
}

int unpublishPapers(const std::string& queue, std::chrono::duration<double> time) {
    return changePPD(queue, time, [](const std::string& ppd, platform::Failure&) {
        return std::optional(withoutPublishedTitles(ppd));
    });
}

} // namespace orvan
