#include <arpa/inet.h>
#include <netdb.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "files/TextFile.h"
#include "host/SuiteServices.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/Paths.h"

namespace netlib {
namespace {

std::string HostName() {
    if (const char* name = std::getenv("ZANDRIX_HOST_NAME"); name && *name) {
        return name;
    }
    char name[HOST_NAME_MAX + 1] = "";
    if (::gethostname(name, sizeof name) != 0) {
        return {};
    }
    name[HOST_NAME_MAX] = '\0';
    return name;
}

std::string FirstIpv4(const std::string& name) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    addrinfo* found = nullptr;
    if (name.empty() || ::getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0 || !found) {
        return {};
    }
    char text[INET_ADDRSTRLEN] = "";
    const auto* address = reinterpret_cast<const sockaddr_in*>(found->ai_addr);
    ::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text);
    ::freeaddrinfo(found);
    return text;
}

}  // namespace

std::string GetLocalHostIp() {
    const std::string name = HostName();
    return FirstIpv4(name) + "(" + name + ")";
}

bool SameHost(const std::string& a, const std::string& b) {
    return files::UpperAscii(a) == files::UpperAscii(b);
}

bool IsSafeRemoteName(const std::string& name) {
    return name.find_first_of("\r\n") == std::string::npos;
}

std::string LocalPath(const std::string& relative) {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), relative);
}

std::string CommonPath(const std::string& relative) {
    return suite::PathJoin(suite::GetZandrixCommonResInstallPath(), relative);
}

}  // namespace netlib
