// The texts the network library shows or composes, and the one way their %s are filled.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace netlib {

inline constexpr const char* kCaption = "Zandrix";

inline constexpr const char* kRootFolderFailedFormat =
    "设置站点当前路径失败!\n可能原因:FTP站点中路径名%s不存在";
inline constexpr const char* kUploadFailedFormat =
    "文件 %s 上传失败，请确认是否被其它客户端用户调用！";
inline constexpr const char* kRemoveFailedFormat =
    "文件 %s 无法删除，请确认是否被其它客户端用户调用！";
inline constexpr const char* kServerHasNoFileFormat = "服务器上不存在<%s>文件！";
inline constexpr const char* kFileLockedByHostFormat =
    "主机IP为%s的用户正对文件<%s>进行操作，可等待其完成后再继续...\n是否强制撤销其库修改操作?";
inline constexpr const char* kRevokedMessageFormat = "文件<%s>的库修改作已被强制撤销，无法入库...";
inline constexpr const char* kRevokedByHostFormat =
    "文件<%s>的库修改作已被主机IP为%s的用户强制撤销，无法入库...";
inline constexpr const char* kLibraryLockedByHostFormat =
    "主机IP为%s的用户正在进行PLC数据库编辑操作，是否强制执行!";

// The format with each %s replaced by the next value, in order.
inline std::string FillFormat(std::string_view format,
                              std::initializer_list<std::string_view> values) {
    std::string text;
    auto value = values.begin();
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] == '%' && i + 1 < format.size() && format[i + 1] == 's' &&
            value != values.end()) {
            text += *value++;
            ++i;
        } else {
            text += format[i];
        }
    }
    return text;
}

}  // namespace netlib
