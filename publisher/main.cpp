// klnpub: publishes service packs, and checks what is published. The exit code is 0 for done, 1 for refused or for
// findings that cost users an update, 2 for wrong use, 3 for what could not be carried out.
#include "platform/Http.h"
#include "platform/RuntimeError.h"
#include "publisher/Check.h"
#include "publisher/Pack.h"
#include "publisher/Usage.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <vector>

namespace korlan::publisher {
namespace {

constexpr int kWrongUse = 2, kFailed = 3;

struct WrongUse {
    std::string what;
};

// What stands behind the command: bare arguments, and options with their values.
struct Arguments {
    std::vector<std::string> bare;
    std::map<std::string, std::string> options;

    Arguments(const std::vector<std::string>& words, const std::set<std::string>& withValue,
              const std::set<std::string>& without) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (!words[i].starts_with("--")) {
                bare.push_back(words[i]);
            } else if (without.contains(words[i])) {
                options[words[i]] = "yes";
            } else if (withValue.contains(words[i])) {
                if (i + 1 == words.size()) throw WrongUse{words[i] + " needs a value"};
                options[words[i]] = words[i + 1];
                ++i;
            } else {
                throw WrongUse{"unknown option " + words[i]};
            }
        }
    }
    void RequireBare(std::size_t count, const char* what) const {
        if (bare.size() != count) throw WrongUse{what};
    }
    std::string Required(const std::string& option) const {
        const auto found = options.find(option);
        if (found == options.end() || found->second.empty()) throw WrongUse{option + " is missing"};
        return found->second;
    }
    std::string Optional(const std::string& option) const {
        const auto found = options.find(option);
        return found == options.end() ? "" : found->second;
    }
};

int RunPack(const std::vector<std::string>& words) {
    const Arguments arguments(words, {"--from", "--to"}, {"--replace"});
    arguments.RequireBare(1, "pack takes one name, as in: klnpub pack SP4 --from STAGING --to SERVER");
    return Pack({arguments.bare[0], arguments.Required("--from"), arguments.Required("--to"),
                 !arguments.Optional("--replace").empty()});
}

// The server to look at, with the time limit for it set.
std::string ServerOf(const Arguments& arguments, const char* what) {
    arguments.RequireBare(1, what);
    const std::string seconds = arguments.Optional("--timeout");
    if (seconds.empty()) return arguments.bare[0];
    if (seconds.size() > 4 || seconds.find_first_not_of("0123456789") != std::string::npos || std::stoi(seconds) == 0)
        throw WrongUse{"--timeout takes a number of seconds from 1 to 9999"};
    SetHttpTimeLimit(std::chrono::seconds(std::stoi(seconds)));
    return arguments.bare[0];
}

int RunCheck(const std::vector<std::string>& words) {
    const Arguments arguments(words, {"--installation", "--timeout"}, {});
    const std::string server = ServerOf(arguments, "check takes one server, a folder or an address");
    return Check(server, arguments.Optional("--installation"));
}

int RunList(const std::vector<std::string>& words) {
    const Arguments arguments(words, {"--timeout"}, {});
    return List(ServerOf(arguments, "list takes one server, a folder or an address"));
}

int RunNote(const std::vector<std::string>& words) {
    const Arguments arguments(words, {}, {});
    arguments.RequireBare(2, "note takes the server's folder and the wizard, as in: klnpub note SERVER KlnUpdt.EXE");
    return WriteNote(arguments.bare[0], arguments.bare[1]);
}

int Dispatch(const std::vector<std::string>& words) {
    const std::string command = words.empty() ? "" : words[0];
    const std::vector<std::string> rest(words.begin() + (words.empty() ? 0 : 1), words.end());
    if (command == "help" || std::ranges::any_of(words, [](auto& word) { return word == "--help" || word == "-h"; })) {
        std::cout << kUsage;
        return 0;
    }
    if (command == "--version") {
        std::cout << "klnpub " KLN_VERSION "\n";
        return 0;
    }
    if (command == "pack") return RunPack(rest);
    if (command == "check") return RunCheck(rest);
    if (command == "list") return RunList(rest);
    if (command == "note") return RunNote(rest);
    throw WrongUse{command.empty() ? "no command" : "unknown command " + command};
}

} // namespace
} // namespace korlan::publisher

int main(int argc, char** argv) {
    using namespace korlan::publisher;
    try {
        return Dispatch({argv + 1, argv + argc});
    } catch (const WrongUse& wrong) {
        std::cerr << "klnpub: " << wrong.what << "; klnpub --help says more\n";
        return kWrongUse;
    } catch (const korlan::RuntimeError& error) {
        std::cerr << "klnpub: " << error.Description() << '\n';
    } catch (const std::filesystem::filesystem_error& error) {
        std::cerr << "klnpub: " << error.what() << '\n';
    }
    return kFailed;
}
