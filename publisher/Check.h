// klnpub check and list: what is published, and what is wrong with it.
#pragma once

#include <filesystem>
#include <string>

namespace korlan::publisher {

// Prints the findings. The exit code: 1 when one of them costs users an update, else 0. `installation` is the program
// folder of an installation or empty; with one, what its wizard would offer is printed too.
int Check(const std::string& server, const std::filesystem::path& installation);

int List(const std::string& server); // 1 when there is something that cannot be read

// Writes the version note of the wizard `program` beside the catalogue in the folder `server`.
int WriteNote(const std::filesystem::path& server, const std::filesystem::path& program);

} // namespace korlan::publisher
