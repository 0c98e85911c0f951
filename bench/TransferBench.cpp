// How fast a download runs: DownloadFile, with the progress text of every block and a form nobody shows, against
// libcurl's plain call into a file, as it comes and with the receive size of the back end; same server, same folder, in
// turns. Prints the medians in MB/s and the ratio of each plain call's time to DownloadFile's (above 1: ours is
// faster). Usage: TransferBench [MB a file] [rounds]
#include "app/base/frmUpdate.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/TempFolder.h"
#include "transfer/HttpTransfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace korlan;

bool FetchPlainly(const std::string& url, const std::string& hostPath, long receiveBytes) {
    std::FILE* file = std::fopen(hostPath.c_str(), "wb");
    CURL* easy = curl_easy_init();
    if (!file || !easy) return false;
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, file);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, receiveBytes);
    const bool well = curl_easy_perform(easy) == CURLE_OK;
    curl_easy_cleanup(easy);
    return std::fclose(file) == 0 && well;
}

bool FetchInBlocks(const std::string& url, const std::string& path, std::int32_t size) {
    std::int32_t done = 0;
    std::int32_t showStatus = 1;
    std::string label = "BENCH.ZIP";
    DownloadFile(url, path, done, size, label, showStatus);
    return done == 1 && Flags.DownloadFailed == 0;
}

template <typename Fetch>
double Seconds(Fetch fetch) {
    const auto start = std::chrono::steady_clock::now();
    if (!fetch()) {
        std::fprintf(stderr, "a download failed\n");
        std::exit(1);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    const int megabytes = argc > 1 ? std::atoi(argv[1]) : 64;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 9;
    if (megabytes < 1 || megabytes > 2047 || rounds < 1) {
        std::fprintf(stderr, "usage: TransferBench [MB a file, 1 to 2047] [rounds]\n");
        return 2;
    }
    const std::int32_t size = megabytes * 1024 * 1024;
    const test::TempDrive drive;
    test::HttpServer server;
    server.Answer("/BENCH.ZIP", {.filling = static_cast<std::uint64_t>(size)});
    const std::string url = server.Url("/BENCH.ZIP");

    std::vector<double> plain, tuned, blocks;
    const std::string plainFile = drive.HostPathOf("plain.zip");
    for (int i = -1; i < rounds; ++i) { // the first round warms up
        const double plainSeconds = Seconds([&] { return FetchPlainly(url, plainFile, CURL_MAX_WRITE_SIZE); });
        const double tunedSeconds = Seconds([&] { return FetchPlainly(url, plainFile, 64 * 1024); });
        const double blockSeconds = Seconds([&] { return FetchInBlocks(url, drive.Path("blocks.zip"), size); });
        if (i < 0) continue;
        plain.push_back(plainSeconds);
        tuned.push_back(tunedSeconds);
        blocks.push_back(blockSeconds);
    }
    const double ours = Median(blocks);
    std::printf("file %d MB, %d rounds, medians\n", megabytes, rounds);
    std::printf("DownloadFile                %6.0f MB/s  %.2f us a block\n", megabytes / ours,
                ours * 1e6 / (megabytes * 1024.0));
    std::printf("libcurl, 16 KB a receive    %6.0f MB/s  ratio %.2f\n", megabytes / Median(plain),
                Median(plain) / ours);
    std::printf("libcurl, 64 KB a receive    %6.0f MB/s  ratio %.2f\n", megabytes / Median(tuned),
                Median(tuned) / ours);
}
