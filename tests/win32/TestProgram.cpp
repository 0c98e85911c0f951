// A program for tests that start one: writes down what it was given, and who it is.
#include "platform/Process.h"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
    {
        std::ofstream report("C:\\report.part", std::ios::binary);
        for (int i = 1; i < argc; ++i) report << '[' << argv[i] << ']';
        report << '\n' << korlan::ProgramPath() << '\n' << korlan::ProgramCommandLine() << '\n';
    }
    return std::rename("C:\\report.part", "C:\\report");
}
