// qvplc: the command-line host of the PLC drawing plug-in.
#include "TopLevel.h"

int main(int argc, char** argv) {
    return cli::Main(argc, argv);
}
