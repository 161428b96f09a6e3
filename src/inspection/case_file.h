// A case file: all that support wants to know of a machine, as one JSON object.

#ifndef DEVICEID_INSPECTION_CASE_FILE_H_
#define DEVICEID_INSPECTION_CASE_FILE_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "inspection/explanation.h"
#include "inspection/health_checks.h"
#include "inspection/redactor.h"

namespace system_info {

struct CaseFacts {
  std::string version;  // Of the program and the library in it.
  HealthFacts health;
  std::optional<std::string> log;  // Of a host, as RestoreLog gave it.
};

// As docs/report.schema.json describes it, without a line end behind it. With a redactor, which may
// have learned more values, nothing is left of those that the object holds.
std::string MakeCaseFile(const CaseFacts& facts, Redactor* redactor);

// Not a case file of this schema, damaged or cut.
class BadCaseFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// True if the bytes of a file can only be those of a case file, good or bad.
bool LooksLikeCaseFile(std::string_view bytes);

// What a case file explains: its machine, or else its log. Throws BadCaseFile.
Explanation ExplainCaseFile(std::string_view bytes);

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_CASE_FILE_H_
