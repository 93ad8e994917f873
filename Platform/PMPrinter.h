// The printing system's printer: a queue of the CUPS scheduler that the process talks to (CUPS_SERVER,
// client.conf).
//
// The operations that ask the scheduler wait for its answer, and share the printer's patience: a scheduler
// that does not answer holds the caller up for less than two seconds in all; Platform/Patience.h says how.
#pragma once

#include "Platform/Patience.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// One thread.
class PMPrinter {
public:
    explicit PMPrinter(std::string queueName) : queueName_(std::move(queueName)) {}
    PMPrinter(const PMPrinter&) = delete;
    PMPrinter& operator=(const PMPrinter&) = delete;
    // Removes the files that it owns.
    ~PMPrinter();

    const std::string& queueName() const { return queueName_; }
    Patience& patience() { return patience_; }
    void ownFile(std::string path) { files_.push_back(std::move(path)); }

    // The number of the last job that the scheduler took from PMPrinterSendCommand; 0 for none.
    int submittedJob() const { return submittedJob_; }
    void setSubmittedJob(int number) { submittedJob_ = number; }

private:
    std::string queueName_;
    int submittedJob_ = 0;
    Patience patience_;
    std::vector<std::string> files_;
};

inline constexpr std::int32_t kPMNoError = 0;
// The scheduler is not there, does not answer, or refuses.
inline constexpr std::int32_t kPMServerNotAvailable = -1;

// The description type that is a printer's PPD.
inline constexpr std::string_view kPMPPDDescriptionType = "PMPPDDescriptionType";

// The printer's identifier: its queue name.
inline const std::string& PMPrinterGetID(const PMPrinter& printer) {
    return printer.queueName();
}

// The URI of the queue's device, without the credentials that the scheduler keeps to itself. kPMNoError, or
// why not.
std::int32_t PMPrinterCopyDeviceURI(PMPrinter& printer, std::string* uri);

// The path of the printer's description, of which there is one type, kPMPPDDescriptionType. With a local
// scheduler whose PPDs this user may read it is a symbolic link to the queue's own file, otherwise a copy;
// link and copy belong to the printer object, which removes them when it ends. While such a scheduler is not
// there it is the queue's own file itself. kPMNoError, or why not.
std::int32_t PMPrinterCopyDescriptionURL(PMPrinter& printer, std::string_view type, std::string* path);

// The MIME type of a command file: what a PPD's filter for one is named for, and how it is submitted.
inline constexpr const char* kCommandFileType = "application/vnd.cups-command";

// Submits the text of a command file ("#CUPS-COMMAND ...") as a job of that title. `options` may be null.
// kPMNoError when the scheduler took the job, or why it did not.
std::int32_t PMPrinterSendCommand(PMPrinter& printer, std::string_view commandText, const std::string& title,
    const std::map<std::string, std::string>* options);

} // namespace platform
