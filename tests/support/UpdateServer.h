// An update server: catalogues and archives made on the spot, served over real HTTP.
#pragma once

#include "tests/support/HttpServer.h"

#include <string>
#include <vector>

namespace korlan::test {

// The bytes of a catalogue (each row is name, designation, size, date, archive).
std::string CatalogueBytes(const std::vector<std::vector<std::string>>& rows);
// The bytes of an archive with one member; time: seconds since 1970.
std::string ArchiveBytes(const std::string& member, const std::string& content, long long time);

class UpdateServer : public HttpServer {
public:
    std::string BaseUrl() const { return Url("/updates"); }
    void Publish(const std::string& name, const std::string& bytes); // below BaseUrl
};

} // namespace korlan::test
