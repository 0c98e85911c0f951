// What the wizard of an installation would offer, worked out by the wizard's own procedures.
#pragma once

#include "publisher/Catalogue.h"

namespace korlan::publisher {

// `folder` is the program folder. Raises when it holds no settings, or names a drive that is not there.
void PrintOffer(const std::filesystem::path& folder, const std::vector<PublishedPack>& packs);

} // namespace korlan::publisher
