// The drawing command's network step, run first by the commands that read the library the
// way the drawing dialog does (qvplc draw, qvplc lib tree) on a network client.
#pragma once

namespace cli {

// With installation style 1 or 2, fetches a missing local library from the server; silent
// when there is no server. Nothing happens on a single workstation.
void RunDrawingNetworkStep();

}  // namespace cli
