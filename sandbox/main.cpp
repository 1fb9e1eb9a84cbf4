#include "sandbox/launch.h"

int main(int argc, char** argv) { return kestrove::sandbox::launch(kestrove::sandbox::readOptions(argc, argv)); }
