#include "Program.h"

int main(int argc, char** argv) { return hexmire::program::Run(argc, argv); }
