// What is wrong with a catalogue, one line a finding: where, which rule, and what it does to users.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korlan::publisher {

inline std::string Counted(std::size_t count, const char* what) { // "1 pack", "2 packs"
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

struct Place {
    std::string pack;     // "Update.mdb" or the pack's file name
    std::int32_t row = 0; // from 1 in table order; 0 is the file as a whole
};

struct Finding {
    bool costsUpdate; // some user does not get a file, or gets a wrong one
    Place place;
    std::string rule; // one word
    std::string text;

    std::string Line() const {
        return place.pack + (place.row == 0 ? "" : " row " + std::to_string(place.row)) + ": " +
               (costsUpdate ? "error" : "warning") + " [" + rule + "] " + text;
    }
};

class Findings {
public:
    void Error(const Place& place, std::string_view rule, std::string text) {
        all_.push_back({true, place, std::string(rule), std::move(text)});
    }
    void Warning(const Place& place, std::string_view rule, std::string text) {
        all_.push_back({false, place, std::string(rule), std::move(text)});
    }
    const std::vector<Finding>& All() const { return all_; }
    std::size_t Errors() const {
        std::size_t count = 0;
        for (const Finding& finding : all_) count += finding.costsUpdate ? 1 : 0;
        return count;
    }

private:
    std::vector<Finding> all_;
};

} // namespace korlan::publisher
