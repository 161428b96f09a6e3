// The log in the bytes that a host has saved.

#ifndef DEVICEID_INSPECTION_SAVED_LOG_H_
#define DEVICEID_INSPECTION_SAVED_LOG_H_

#include <string>
#include <string_view>

namespace system_info {

// Returns the log in `bytes`, which may have the line ends of another system, be in UTF-16, begin
// with a byte order mark, or be the whole buffer of the host. Several logs behind each other stay.
std::string RestoreLog(std::string_view bytes);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_SAVED_LOG_H_
