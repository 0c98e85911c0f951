// An update server: catalogues and archives made on the spot, served over real HTTP.
#pragma once

#include "tests/support/HttpServer.h"

#include <string>
#include <vector>

namespace korlan::test {

struct CatalogueRow { // the five columns of a catalogue
    std::string fileName, filePath, fileSize, fileDate, fileZipName;
};

// The bytes of a catalogue database and of an archive with one member, whose time is given in seconds since 1970.
std::string CatalogueBytes(const std::vector<CatalogueRow>& rows);
std::string ArchiveBytes(const std::string& member, const std::string& content, long long time);

class UpdateServer : public HttpServer {
public:
    std::string BaseUrl() const { return Url("/updates"); }
    void Publish(const std::string& name, const std::string& bytes); // below BaseUrl
};

} // namespace korlan::test
