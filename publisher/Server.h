// A catalogue's server, looked at from outside: the folder it serves, or its address.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace korlan::publisher {

struct Fetched {
    std::filesystem::path file; // its content; empty when it could not be had
    std::string problem;        // why not
    std::int64_t length = -1;   // as the server states it; -1 when it states none
    std::uintmax_t received = 0;
};

class Server {
public:
    virtual ~Server() = default;
    // The file of that name, as a catalogue gives it. What came over the network lies in a temporary folder of the
    // server's own.
    virtual Fetched Get(const std::string& name) = 0;
    virtual void Drop(const Fetched&) {} // it is not needed any more
};

// `where` is an address beginning with http:// or https://, else a folder, which raises when it is not there.
std::unique_ptr<Server> OpenServer(const std::string& where);

} // namespace korlan::publisher
