#include "transfer/HttpTransfer.h"

#include "app/base/LocalText.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "platform/FileSystem.h"
#include "platform/FormHost.h"
#include "platform/Http.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"

#include <array>

namespace korlan {
namespace {

constexpr std::size_t kBlockSize = 1024;
constexpr std::int32_t kErrInternet = -2147220504; // the object-error base plus 1000

constexpr const char* kAgent = "KlnUpdt";

std::string EscapedUrl(const std::string& url) {
    return Replace(url, "#", "%23");
}

// The address as a person may see it: a name and a password in it are nobody's business.
std::string ShownUrl(const std::string& url) {
    const std::size_t scheme = url.find("://"), host = scheme == std::string::npos ? 0 : scheme + 3;
    const std::size_t at = url.substr(0, url.find_first_of("/\\?#", host)).rfind('@');
    return at == std::string::npos || at < host ? url : url.substr(0, host) + url.substr(at + 1);
}

bool YieldUnlessCancelled() {
    GiveWay();
    return Flags.CancelRequested == 0;
}

std::unique_ptr<HttpSession> OpenSession() {
    auto session = OpenHttpSession(kAgent, YieldUnlessCancelled);
    if (!session) throw RuntimeError(kErrInternet, "An error occurred calling InternetOpen function");
    return session;
}

std::unique_ptr<HttpBody> OpenBody(HttpSession& session, const std::string& url) {
    auto body = session.OpenUrl(url);
    if (!body) throw RuntimeError(kErrInternet, "An error occurred calling InternetOpenUrl function");
    return body;
}

void EraseOlderCopy(const std::string& path) {
    try {
        SetAttributesNormal(path);
    } catch (const RuntimeError&) { // mostly there is no older copy
    }
    try {
        EraseFile(path);
    } catch (const RuntimeError&) { // creating the file will tell
    }
}

std::string KilobyteText(std::int32_t bytes) {
    return SignedText(Kilobytes(bytes));
}

// Counts what has come and shows it on the message line. The counts are 32-bit; outgrowing that raises 6.
class Progress {
public:
    Progress(const std::string& fileName, std::int32_t fileSize)
        : fileSize_(fileSize), before_(fileName + " - " + GetLocalText("Transferred : ", "991877")),
          between_(GetLocalText("KB", "991850") + GetLocalText(" of ", "52128") + KilobyteText(fileSize) +
                   GetLocalText("KB", "991850") + " - "),
          after_(GetLocalText("% complete", "991879")) {}

    void Add(std::size_t bytes) {
        if (fileSize_ == 0) return;
        received_ = RoundHalfEven(static_cast<double>(received_) + static_cast<double>(bytes));
        percent_ = RoundHalfEven(static_cast<double>(received_) / fileSize_ * 100);
        EditMsgline(before_ + KilobyteText(received_) + between_ + SignedText(percent_) + after_);
    }
    bool Complete() const { return percent_ == 100; }

private:
    std::int32_t fileSize_;
    std::int32_t received_ = 0;
    std::int32_t percent_ = 0;
    std::string before_, between_, after_; // what stays the same from block to block
};

void ReadToFile(HttpBody& body, OutputFile& file, Progress& progress, std::int32_t showStatus) {
    std::array<char, kBlockSize> block;
    auto end = HttpBody::End::None;
    do {
        std::size_t read = 0;
        end = body.Read(block, read);
        if (read == 0) continue;
        file.Write({block.data(), read});
        progress.Add(read);
        if (showStatus != 0) LiveUpdateStatus();
        GiveWay();
    } while (end == HttpBody::End::None && Flags.CancelRequested == 0);
    if (Flags.CancelRequested == 0) {
        file.Close(); // a disk that is full now is an error like one that was full before
        Flags.DownloadFailed = 1;
    }
    if (progress.Complete()) Flags.DownloadFailed = 0;
    if (Flags.CancelRequested != 0) throw RuntimeError(kErrDeliberateAbort);
}

} // namespace

void DownloadFile(const std::string& url, const std::string& saveAs, std::int32_t& done, std::int32_t fileSize,
                  const std::string& fileName, std::int32_t showStatus) {
    try {
        if (url.empty() || saveAs.empty()) throw RuntimeError(kErrInvalidCall);
        const auto session = OpenSession();
        // Two requests a file reach the server, as ever; the second answer is read.
        const auto unread = session->OpenUrl(EscapedUrl(url));
        const auto body = OpenBody(*session, EscapedUrl(url));
        EraseOlderCopy(saveAs);
        OutputFile file(saveAs, OutputFile::Mode::Create);
        Progress progress(fileName, fileSize);
        ReadToFile(*body, file, progress, showStatus);
        done = 1;
    } catch (const RuntimeError& error) { // the caller looks at done and DownloadFailed; nothing is shown
        LogTrapped("DownloadFile", error);
    }
}

std::int32_t GetWebFileInformation(const std::string& url, std::int32_t& size, bool& exists) {
    TransferControl inet(kAgent);
    inet.SetUrl(EscapedUrl(url));
    inet.ExecuteGet();
    while (inet.StillExecuting()) GiveWay();

    const std::string code = Left(Mid(inet.GetHeader(), 10), 3); // of "HTTP/1.1 404 Not Found"
    const std::string refusal = code == "401"   ? "Unauthorized Access, Download Terminated!"
                                : code == "403" ? "Access Denied, Download Terminated!"
                                : code == "404" ? "File Not Found : "
                                                : "";
    if (!refusal.empty()) {
        ShowMsgBox(refusal + ShownUrl(url), kBoxOkOnly, GetSysName());
        if (code == "404") exists = false;
        if (code == "401") return 0; // kept: size stays, and the request
        size = 0;
        inet.Cancel();
        return 0;
    }
    exists = true;
    size = ToInteger(inet.GetHeader("Content-Length"));
    return 1;
}

} // namespace korlan
