#include "platform/linux/runtime_api.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <string_view>

#include "platform/linux/layer_state.h"

using system_info::PlatformCall;
using system_info::PresentMachine;
using system_info::ScriptedFailure;

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::uint64_t kTicksFrom1601To1970 = 116'444'736'000'000'000;

// The size that the library is meant to pass.
constexpr UINT kWindowsFolderSize = 50;

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

// Checks the encoding, since a thread can have its own locale.
bool InDefaultLocale() { return std::string_view(nl_langinfo(CODESET)) == "ANSI_X3.4-1968"; }

// Converts up to and including the terminator, element by element, within `size`. `convert` returns
// false for an element that cannot be converted.
template <typename To, typename From, typename HasForm>
std::size_t ConvertOneToOne(To* destination, const From** source, std::size_t size,
                            HasForm has_form) {
  for (std::size_t count = 0; count < size; ++count, ++*source) {
    const From element = **source;
    if (!has_form(element)) {
      errno = EILSEQ;
      return kFailed;
    }
    destination[count] = static_cast<To>(element);
    if (element == 0) {
      *source = nullptr;
      return count;
    }
  }
  return size;
}

// Checks the limit only before each character, as the runtime library of Windows does.
std::size_t ConvertByCharacter(char* destination, const wchar_t** source, std::size_t size,
                               std::mbstate_t* state) {
  std::size_t count = 0;
  while (count < size) {
    std::array<char, MB_LEN_MAX> bytes = {};
    const std::size_t length = std::wcrtomb(bytes.data(), **source, state);
    if (length == kFailed) return kFailed;
    std::copy_n(bytes.begin(), length, destination + count);
    if (**source == L'\0') {
      *source = nullptr;
      return count + length - 1;
    }
    count += length;
    ++*source;
  }
  return count;
}

}  // namespace

void GetSystemTimeAsFileTime(FILETIME* time) {
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(PresentMachine().PresentTicks()) + kTicksFrom1601To1970;
  time->dwLowDateTime = static_cast<DWORD>(ticks);
  time->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
}

// NOLINTBEGIN(bugprone-reserved-identifier)

__time64_t _time64(__time64_t* time) {
  if (time != nullptr) return -1;
  return PresentMachine().PresentTicks() / kTicksPerSecond;
}

int _localtime64_s(std::tm* local, const __time64_t* time) {
  if (ScriptedFailure(PlatformCall::kLocalTime)) return EINVAL;
  const std::time_t seconds = *time;
  return localtime_r(&seconds, local) != nullptr ? 0 : EINVAL;
}

// NOLINTEND(bugprone-reserved-identifier)

UINT GetWindowsDirectoryW(wchar_t* buffer, UINT size) {
  if (size != kWindowsFolderSize) return 0;
  if (const auto length = ScriptedFailure(PlatformCall::kGetWindowsDirectory)) return *length;
  const std::wstring folder = PresentMachine().WindowsFolder();
  const auto length = static_cast<UINT>(folder.size());
  if (length >= size) return length + 1;
  std::copy(folder.begin(), folder.end(), buffer);
  buffer[length] = L'\0';
  return length;
}

namespace system_info {

std::size_t wcsrtombs(char* destination, const wchar_t** source, std::size_t size,
                      std::mbstate_t* state) {
  if (!InDefaultLocale()) return ConvertByCharacter(destination, source, size, state);
  return ConvertOneToOne(destination, source, size, [](wchar_t element) {
    return static_cast<std::uint32_t>(element) <= 0xff;
  });
}

std::size_t mbsrtowcs(wchar_t* destination, const char** source, std::size_t size,
                      std::mbstate_t* state) {
  if (!InDefaultLocale()) return ::mbsrtowcs(destination, source, size, state);
  const auto* bytes = reinterpret_cast<const unsigned char*>(*source);
  const std::size_t count =
      ConvertOneToOne(destination, &bytes, size, [](unsigned char) { return true; });
  *source = reinterpret_cast<const char*>(bytes);
  return count;
}

}  // namespace system_info
