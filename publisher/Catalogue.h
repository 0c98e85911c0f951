// A whole catalogue as a server offers it: the master, and every pack that it lists.
#pragma once

#include "publisher/CatalogueFile.h"
#include "publisher/Findings.h"
#include "publisher/Server.h"

namespace korlan::publisher {

struct PublishedPack {
    std::string name;           // as the master lists it
    std::int32_t masterRow = 0; // from 1
    std::filesystem::path file; // empty when it could not be had
    CatalogueRows rows;
};

constexpr const char* kMasterName = "Update.mdb";

// What cannot be fetched or read is told in `findings`, with the rules of the master's own rows. False when there is no
// master to read.
bool ReadPublished(Server& server, std::vector<PublishedPack>& packs, Findings& findings);

// Rules between the rows of all packs.
void CheckAcrossRows(const std::vector<PublishedPack>& packs, Findings& findings);

// The archives that the rows name, each fetched once.
void CheckArchives(Server& server, const std::vector<PublishedPack>& packs, Findings& findings);

} // namespace korlan::publisher
