#include "platform/native_paths.h"

namespace system_info {

std::filesystem::path FromSystemText(const std::string& text) { return text; }

std::filesystem::path FromUtf8(const std::string& text) { return text; }

std::string ToUtf8(const std::filesystem::path& path) { return path.string(); }

std::string ToUtf8(const std::wstring& text) { return std::filesystem::path(text).string(); }

}  // namespace system_info
