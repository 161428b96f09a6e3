// The numbers of the study, from parameters.json.

#ifndef DEVICEID_STUDY_PARAMETERS_H_
#define DEVICEID_STUDY_PARAMETERS_H_

#include <map>
#include <string>

namespace system_info {

class Parameters {
 public:
  // Those of one population. Throws if the file does not have it.
  Parameters(const std::string& path, const std::string& population);

  // Throws std::out_of_range with the name if there is none.
  double operator[](const std::string& name) const;

  void Set(const std::string& name, double value);

 private:
  std::map<std::string, double> values_;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_PARAMETERS_H_
