// An archive extracted over an existing file, with a user who knows the password.
#include "platform/ZipLibrary.h"
#include "tests/fuzz/Target.h"

#include <sys/resource.h>

#include <csignal>

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool limited = [] { // what unpacks to more finds the disk full
        const rlimit limit{16 << 20, 16 << 20};
        return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }();
    StartFresh();
    Drive().Write("KORLAN/Temp/A.zip", Bytes(data, size));
    Drive().Write("KORLAN/LIB/a.txt", "old");
    USERFUNCTIONS user;
    user.print = [](std::string_view) { return 0; };
    user.replace = [](const std::string&) { return kOverwriteYes; };
    user.password = [](std::string& password, std::size_t, const std::string&) {
        password = "right";
        return kPasswordGiven;
    };
    user.message = [](const ListedMember&) {};
    user.service = [] {};
    DCL options;
    options.lpszZipFN = "C:\\KORLAN\\Temp\\A.zip";
    options.lpszExtractDir = "C:\\KORLAN\\LIB";
    Wiz_SingleEntryUnzip(0, {}, 0, {}, options, user);
    Require(Drive().Names() == std::vector<std::string>{"KORLAN"} && Drive().Names("KORLAN").size() == 3 &&
                Drive().Names("KORLAN/Temp").size() == 1,
            "no member outside the folder");
    for (const auto& entry : std::filesystem::directory_iterator(Drive().HostPathOf("KORLAN/LIB"))) {
        Require(entry.symlink_status().type() == std::filesystem::file_type::regular, "files only");
        Require(!entry.path().filename().string().starts_with(".klnunzip"),
                "nothing half written: " + entry.path().filename().string());
        std::filesystem::remove(entry.path());
    }
    return 0;
}
