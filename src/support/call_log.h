// The log of one exported call.
//
// A HIDLog lives in memory from the moment a call accepted its arguments until it returns. The call
// owns it and shares it with its manager; code below these two borrows it. It belongs to the thread
// of the call and has no lock.

#ifndef DEVICEID_SUPPORT_CALL_LOG_H_
#define DEVICEID_SUPPORT_CALL_LOG_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace system_info {

// The kind of a line. All kinds are written.
enum class LogLevel : std::int32_t { Info = 0, Debug = 1, Error = 2 };

class HIDLog {
 public:
  // While the log is disabled every write is ignored, without even a look at the clock.
  void Disable() { enabled_ = false; }
  void Enable() { enabled_ = true; }
  void Clear() { text_.clear(); }

  // Appends one line: time, level, the unchanged `message`, and a line feed. The line is appended
  // whole or, if memory runs out, not at all. Throws what std::string throws.
  void Write(std::string_view message, LogLevel level);

  // The same for wide text, up to the first character that ToNarrow cannot convert.
  void WriteWide(const std::wstring& message, LogLevel level);

  // Appends the lines of `other` with their own times.
  void Append(const HIDLog& other) {
    if (enabled_) text_ += other.text_;
  }

  // All lines so far.
  const std::string& text() const { return text_; }

  // Copies the text into `buffer` of `size` bytes, terminator included, truncated if it does not
  // fit. Nothing is written if `buffer` is null or `size` is 0.
  void CopyTo(char* buffer, std::uint32_t size) const;

 private:
  std::string text_;
  bool enabled_ = true;
};

// Base of the classes that write to the log of the call they work for.
template <typename Log>
class EnableLogging {
 protected:
  explicit EnableLogging(std::shared_ptr<Log> log) : log_(std::move(log)) {}
  ~EnableLogging() = default;

  std::shared_ptr<Log> log_;
};

// "[Info]", "[Debug]" or "[Error]".
const char* LevelText(LogLevel level);

// The local time as "[09:05:03:042]", hours to milliseconds.
std::string LogTimestamp();

// Copies `source`, up to its first zero byte, into `destination` together with a terminator.
//
// `size` is the capacity of `destination` in bytes, terminator included. Returns 0 when all of it
// fitted. Returns 1 otherwise; the first `size` - 1 bytes and a terminator are then in place, or
// nothing at all was written if `size` is 0.
std::int32_t CopyToBuffer(std::string_view source, char* destination, std::uint32_t size);

}  // namespace system_info

#endif  // DEVICEID_SUPPORT_CALL_LOG_H_
