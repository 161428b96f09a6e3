// A log without what identifies a machine or a person.

#ifndef DEVICEID_INSPECTION_REDACTED_LOG_H_
#define DEVICEID_INSPECTION_REDACTED_LOG_H_

#include <string>
#include <string_view>

#include "inspection/redactor.h"

namespace system_info {

// Adds the values of a log to those that are replaced. `log` is one that RestoreLog gave.
void LearnFromLog(std::string_view log, Redactor& redactor);

// Lets an id that a call made of its values be one that is made of their digests. All values are to
// be learned before, and nothing is to be redacted yet.
void BindMadeId(std::string_view log, Redactor& redactor);

// The lines of the library with digests for their values; whatever else stands in `log` is left
// out. It is explained as `log` is. All values are to be learned, and the made id bound before.
std::string RedactLog(std::string_view log, Redactor& redactor);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_REDACTED_LOG_H_
