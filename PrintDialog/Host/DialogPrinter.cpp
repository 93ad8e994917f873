#include "PrintDialog/Host/DialogPrinter.h"

namespace orvan {

platform::PPDRecord DialogPrinter::takeFreshPPD() {
    platform::PPDRecord ppd = printer_->takeFreshPPD();
    if (ppd != nullptr && handler_) handler_(storedAnswers(ppd.get(), answerBudget()));
    return ppd;
}

} // namespace orvan
