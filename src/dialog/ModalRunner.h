// How a dialog class opens a modal sub-dialog without knowing any toolkit: the caller hands
// in a runner that shows the prepared dialog (a Qt view, a command-line script, a test) and
// returns true when it was closed with OK. The runner drives the dialog's own methods (its
// initialisation, the user's clicks, OnOK), so every check stays in the dialog class.
#pragma once

#include <functional>

namespace dialog {

template <class Dialog>
using ModalRunner = std::function<bool(Dialog&)>;

}  // namespace dialog
