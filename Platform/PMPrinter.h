// The printing system's printer, as whoever configures or asks it sees it: an interface, which the program
// around implements (Scheduler/SchedulerPrinter.h).
//
// Nothing here waits. What is answered is what is known now; what is asked for goes its way, and the next
// look tells how far it is.
#pragma once

#include <cups/ppd.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using PPDRecord = std::unique_ptr<ppd_file_t, ClosePPD>;

// Main thread.
class PMPrinter {
public:
    using Options = std::map<std::string, std::string>;

    PMPrinter() = default;
    PMPrinter(const PMPrinter&) = delete;
    PMPrinter& operator=(const PMPrinter&) = delete;
    virtual ~PMPrinter() = default;

    // The name of the printer's queue.
    virtual const std::string& queueName() const = 0;
    // The URI of the queue's device, without the credentials that the printing system keeps to itself; ""
    // when it is not known.
    virtual std::string deviceURI() const = 0;
    // The path of the queue's PPD, which stays there as long as this object; "" when there is none.
    virtual std::string descriptionPath() const = 0;

    // Hands the text of a command file over, to be submitted to the queue as a job of that title. False when
    // it cannot even be handed over.
    virtual bool sendCommand(std::string_view text, const std::string& title, const Options& options) = 0;
    // The titles of this person's jobs in the queue that are pending, held, processing or stopped, as far as
    // is known. A job that was handed over is among them until it has gone and the queue's new PPD is here;
    // one that was not taken, or of which nothing is heard, until that is known.
    virtual std::vector<std::string> activeJobTitles() = 0;
    // The queue's PPD of after the last job that has gone; null when there is none, or when it was taken
    // before.
    virtual PPDRecord takeFreshPPD() = 0;
    // How many bytes of answers may be decoded at once, before whoever waits for the main loop notices.
    virtual std::size_t answerBudget() const = 0;
};

inline constexpr std::int32_t kPMNoError = 0;
// What was asked for is not known, or cannot be done.
inline constexpr std::int32_t kPMServerNotAvailable = -1;

// The description type that is a printer's PPD.
inline constexpr std::string_view kPMPPDDescriptionType = "PMPPDDescriptionType";

// The printer's identifier: its queue name.
inline const std::string& PMPrinterGetID(const PMPrinter& printer) {
    return printer.queueName();
}

// The URI of the queue's device in `uri`. kPMNoError, or why not.
inline std::int32_t PMPrinterCopyDeviceURI(const PMPrinter& printer, std::string& uri) {
    uri = printer.deviceURI();
    return uri.empty() ? kPMServerNotAvailable : kPMNoError;
}

// The path of the printer's description, of which there is one type, kPMPPDDescriptionType. kPMNoError, or
// why not.
inline std::int32_t PMPrinterCopyDescriptionURL(
    const PMPrinter& printer, std::string_view type, std::string& path) {
    path = type == kPMPPDDescriptionType ? printer.descriptionPath() : std::string();
    return path.empty() ? kPMServerNotAvailable : kPMNoError;
}

// The MIME type of a command file: what a PPD's filter for one is named for, and how it is submitted.
inline constexpr const char* kCommandFileType = "application/vnd.cups-command";

// Hands over the text of a command file ("#CUPS-COMMAND ...") as a job of that title. kPMNoError when it is
// on its way; PMPrinter::activeJobTitles tells how far it is.
inline std::int32_t PMPrinterSendCommand(PMPrinter& printer, std::string_view commandText,
    const std::string& title, const PMPrinter::Options& options) {
    return printer.sendCommand(commandText, title, options) ? kPMNoError : kPMServerNotAvailable;
}

} // namespace platform
