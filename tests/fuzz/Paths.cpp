// The first line is the command line, the second a name that the server gives.
#include "app/base/Paths.h"
#include "app/CommandLine.h"
#include "platform/FileSystem.h"
#include "tests/fuzz/Target.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StartFresh();
    std::string_view rest = Bytes(data, size);
    Process().commandLine = TakeLine(rest);
    const std::string before = std::filesystem::current_path();
    ParseCommandLine();
    Require(std::filesystem::current_path() == before, "the current folder stays");
    std::string path = TakeLine(rest);
    if (StaysInFolder(path)) {
        MayBeRefused([&] {
            Require(IsInside("C:\\KORLAN\\LIB\\" + path) && IsInside("C:\\KORLAN\\" + path + "\\A.zip"),
                    "inside: " + path);
        });
    }
    MayBeRefused([&] { HostPath(WindowsPath(HostPath(path))); });
    MayBeRefused([&] {
        std::string folder;
        GetKorlanFilePath(path, folder);
        AddBackslash(folder);
        Require(IsInside(folder + "A"), "inside: " + folder);
    });
    FindNormalFile(path);
    EraseFile("C:\\KORLAN\\LIB\\none" + path);
    return 0;
}
