// The names in folders, found whatever the case of their letters. A folder is read once; after that the host's own
// change notices keep its names current, whoever changes them, so nothing new is hidden and nothing old is shown.
// Folders on file systems that do not tell of every change are read at each question.
#pragma once

#include "platform/TextCase.h"
#include "platform/linux/FileHandle.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace korlan {

class FolderIndex {
public:
    // The spelling under which the name is in the folder: as given, else the first in byte order that differs in case
    // only, else as given. Nothing when the names of the folder are not known; this asks no more than whether they are.
    std::optional<std::string> KnownSpelling(const std::string& hostFolder, const std::string& name);
    // The same; reads the folder when its names are not known.
    std::string Spelling(const std::string& hostFolder, const std::string& name);

private:
    struct SameUpperCase { // as hash and as comparison
        std::size_t operator()(const std::string& name) const { return std::hash<std::string>()(UpperCase(name)); }
        bool operator()(const std::string& one, const std::string& other) const {
            return UpperCase(one) == UpperCase(other);
        }
    };
    using Names = std::unordered_multiset<std::string, SameUpperCase, SameUpperCase>;
    using Identity = std::pair<dev_t, ino_t>;

    static const std::string& Choose(const Names& names, const std::string& name);
    const Names& ReadFolder(const std::string& hostFolder);
    void TakeNotices();
    void TakeNotice(int watch, unsigned what, const std::string& name);
    void ForgetAll();

    FileHandle notices_;
    std::map<Identity, Names> folders_;
    std::unordered_map<std::string, Identity> paths_; // under which they were asked for
    std::unordered_map<int, Identity> watches_;
    Names unwatched_; // of the folder read last, when it tells of nothing
};

} // namespace korlan
