// One process that searches and updates again and again, as no user's does: whatever a round leaves behind adds up
// here.
#include "tests/system/WizardFixture.h"

#include <malloc.h>

namespace korlan {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(KLN_FEW_ROUNDS)
constexpr int kSearches = 50, kRuns = 15;
#else
constexpr int kSearches = 500, kRuns = 50;
#endif
constexpr int kFirst = 10;
constexpr std::size_t kNoise = 1024; // bytes a round: what caches of the toolkit take and give for some hundred rounds
constexpr std::ptrdiff_t kConnections = 3; // the three requests of a file: as many as happen to be idle are kept

struct Held {
    std::size_t heap = mallinfo2().uordblks + mallinfo2().hblkhd;
    std::ptrdiff_t files = Entries("/proc/self/fd"), threads = Entries("/proc/self/task");
    std::string children = Children();

    static std::ptrdiff_t Entries(const char* folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }
    static std::string Children() {
        std::ifstream file("/proc/self/task/" + std::to_string(getpid()) + "/children");
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

class EnduranceTest : public test::WizardFixture {
protected:
    template <typename Round>
    static void Repeat(int rounds, Round round) {
        Held first;
        for (int i = 1; i <= rounds && !HasFailure(); ++i) {
            round();
            if (i == kFirst) first = Held();
        }
        const Held last;
        EXPECT_LE(last.heap, first.heap + kNoise * static_cast<std::size_t>(rounds));
        EXPECT_LE(last.files, first.files + kConnections);
        EXPECT_LE(last.threads, first.threads);
        EXPECT_EQ(last.children, first.children);
        std::cout << rounds << " rounds, the heap has grown by " << static_cast<long>(last.heap - first.heap)
                  << " bytes since the first ten\n";
    }
    void MakeEverythingOld() const {
        for (const auto& entry : fs::recursive_directory_iterator(sample.Program()))
            if (entry.is_regular_file() && entry.path().filename() != "KlnUpdt.EXE")
                fs::last_write_time(entry, std::chrono::file_clock::from_sys(std::chrono::sys_seconds{}));
        for (const auto& entry : fs::directory_iterator(sample.Program() / "Temp")) fs::remove(entry);
    }
};

TEST_F(EnduranceTest, SearchesLeaveNothingBehind) {
    Repeat(kSearches, [] {
        Start();
        EXPECT_GT(frmUpdate.lvwFilesList.Count(), 20);
    });
}

TEST_F(EnduranceTest, RunsLeaveNothingBehind) {
    const std::string ini = sample.Ini();
    Repeat(kRuns, [&] {
        std::ofstream(sample.Program() / "SYS" / "TESSARY.INI", std::ios::binary) << ini;
        MakeEverythingOld();
        Start();
        Press("cmdUpdate");
        EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update completed Successfully");
    });
}

} // namespace
} // namespace korlan
