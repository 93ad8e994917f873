// What the print dialog's side remembers for a person, in orvan/print-dialog.conf of their configuration
// folder.
#pragma once

namespace orvan {

// Whether the tab's details were unfolded last; false when that is not known.
bool remembersUnfoldedDetails();
// Where the file cannot be written, nothing is remembered.
void rememberUnfoldedDetails(bool unfolded);

} // namespace orvan
