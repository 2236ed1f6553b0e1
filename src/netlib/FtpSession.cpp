#include "netlib/FtpSession.h"

#include <curl/curl.h>

#include <mutex>

namespace netlib {
namespace {

CURL* Handle(void* curl) {
    return static_cast<CURL*>(curl);
}

void GlobalInit() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

size_t WriteToSink(char* data, size_t size, size_t count, void* user) {
    auto* sink = static_cast<const FtpSink*>(user);
    const size_t bytes = size * count;
    return (*sink)(std::string_view(data, bytes)) ? bytes : 0;
}

size_t DiscardBytes(char*, size_t size, size_t count, void*) {
    return size * count;
}

std::string ServerPart(const LoginSettings& settings) {
    std::string server = settings.Server();
    if (server.rfind("ftp://", 0) == 0) {
        server.erase(0, 6);
    }
    while (!server.empty() && server.back() == '/') {
        server.pop_back();
    }
    std::string port = settings.Port();
    if (port.empty() || port.find_first_not_of("0123456789") != std::string::npos) {
        port = "21";
    }
    return "ftp://" + server + ":" + port;
}

}  // namespace

std::string EscapePath(std::string_view path) {
    std::string out;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string_view::npos) {
            end = path.size();
        }
        if (end > start) {
            char* escaped =
                curl_easy_escape(nullptr, path.data() + start, static_cast<int>(end - start));
            if (!out.empty()) {
                out += '/';
            }
            out += escaped;
            curl_free(escaped);
        }
        start = end + 1;
    }
    return out;
}

FtpSession::FtpSession(const LoginSettings& settings) : base_(ServerPart(settings)) {
    GlobalInit();
    curl_ = curl_easy_init();
    CURL* curl = Handle(curl_);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    // Large reads: a 50 MB library in fewer, larger writes to the local file.
    curl_easy_setopt(curl, CURLOPT_BUFFERSIZE, 512L * 1024);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_SERVER_RESPONSE_TIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, kTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_ACCEPTTIMEOUT_MS, kTimeoutSeconds * 1000);
    if (!settings.User().empty() || !settings.Password().empty()) {
        curl_easy_setopt(curl, CURLOPT_USERNAME, settings.User().c_str());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, settings.Password().c_str());
    }
    if (!settings.Passive()) {
        // Active mode: the server connects back to the address of the control connection.
        curl_easy_setopt(curl, CURLOPT_FTPPORT, "-");
    }
}

FtpSession::~FtpSession() {
    curl_easy_cleanup(Handle(curl_));
}

std::string FtpSession::Url(std::string_view path, bool folder) const {
    std::string url = base_ + "/" + EscapePath(path);
    if (folder && url.back() != '/') {
        url += '/';
    }
    return url;
}

FtpResult FtpSession::Perform() {
    CURL* curl = Handle(curl_);
    char message[CURL_ERROR_SIZE] = "";
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, message);
    const CURLcode code = curl_easy_perform(curl);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
    const char* entry = nullptr;
    if (curl_easy_getinfo(curl, CURLINFO_FTP_ENTRY_PATH, &entry) == CURLE_OK && entry) {
        entryPath_ = entry;
    }
    FtpResult result;
    result.curlCode = code;
    if (code == CURLE_OK) {
        result.outcome = FtpOutcome::Ok;
        return result;
    }
    result.error = *message ? message : curl_easy_strerror(code);
    result.loginRefused = code == CURLE_LOGIN_DENIED;
    result.couldNotConnect = code == CURLE_COULDNT_CONNECT;
    // 550 answers: the file (CURLE_REMOTE_FILE_NOT_FOUND) or a folder on its way
    // (CURLE_REMOTE_ACCESS_DENIED, a refused CWD) is not there.
    if (code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_REMOTE_ACCESS_DENIED) {
        result.outcome = FtpOutcome::Absent;
    }
    return result;
}

void FtpSession::Prepare(const std::string& url) {
    CURL* curl = Handle(curl_);
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_NOBODY, 0L);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 0L);
    curl_easy_setopt(curl, CURLOPT_QUOTE, nullptr);
    curl_easy_setopt(curl, CURLOPT_FTP_CREATE_MISSING_DIRS,
                     static_cast<long>(CURLFTP_CREATE_DIR_NONE));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, DiscardBytes);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, nullptr);
    curl_easy_setopt(curl, CURLOPT_READDATA, nullptr);
}

FtpResult FtpSession::EnterFolder(std::string_view folder) {
    Prepare(Url(folder, true));
    curl_easy_setopt(Handle(curl_), CURLOPT_NOBODY, 1L);
    return Perform();
}

FtpResult FtpSession::Fetch(std::string_view path, const FtpSink& sink) {
    Prepare(Url(path, false));
    curl_easy_setopt(Handle(curl_), CURLOPT_WRITEFUNCTION, WriteToSink);
    curl_easy_setopt(Handle(curl_), CURLOPT_WRITEDATA, &sink);
    return Perform();
}

FtpResult FtpSession::Size(std::string_view path) {
    Prepare(Url(path, false));
    curl_easy_setopt(Handle(curl_), CURLOPT_NOBODY, 1L);
    return Perform();
}

FtpResult FtpSession::Send(std::FILE* file, std::string_view path) {
    Prepare(Url(path, false));
    CURL* curl = Handle(curl_);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl, CURLOPT_READDATA, file);
    curl_easy_setopt(curl, CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR));
    return Perform();
}

FtpResult FtpSession::Commands(const std::vector<std::string>& commands) {
    Prepare(Url("", true));
    curl_slist* list = nullptr;
    for (const auto& command : commands) {
        list = curl_slist_append(list, command.c_str());
    }
    CURL* curl = Handle(curl_);
    curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
    curl_easy_setopt(curl, CURLOPT_QUOTE, list);
    FtpResult result = Perform();
    curl_easy_setopt(curl, CURLOPT_QUOTE, nullptr);
    curl_slist_free_all(list);
    return result;
}

std::string FtpSession::FromLoginFolder(std::string_view path) const {
    std::string absolute = entryPath_.empty() ? std::string("/") : entryPath_;
    if (absolute.back() != '/') {
        absolute += '/';
    }
    return absolute + std::string(path);
}

}  // namespace netlib
