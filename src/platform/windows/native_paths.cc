#include "platform/native_paths.h"

#include "platform/windows_api.h"

namespace system_info {
namespace {

std::wstring Widen(const std::string& text, UINT code_page) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), length);
  return wide;
}

}  // namespace

std::filesystem::path FromSystemText(const std::string& text) { return Widen(text, CP_ACP); }

std::filesystem::path FromUtf8(const std::string& text) { return Widen(text, CP_UTF8); }

std::string ToUtf8(const std::filesystem::path& path) { return ToUtf8(path.wstring()); }

std::string ToUtf8(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

}  // namespace system_info
