// The path that a call for format 2.0 takes through the picture docs/decision.svg.

#ifndef DEVICEID_TOOLS_PAGE_DECISION_PATH_H_
#define DEVICEID_TOOLS_PAGE_DECISION_PATH_H_

#include <optional>
#include <string>

#include "inspection/explanation.h"
#include "inspection/log_facts.h"

namespace deviceid {

// The nodes of docs/decision.dot in their order, with blanks between them: "files known young". The
// path of a call whose log does not tell its end goes as far as is known. Empty for other formats.
std::string PathOf(const system_info::LogFacts& facts);

// The same for a call that ended so.
std::string PathTo(system_info::CallEnd end, bool random);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_PAGE_DECISION_PATH_H_
