#include "study/parameters.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace system_info {

Parameters::Parameters(const std::string& path, const std::string& population) {
  const auto file = nlohmann::json::parse(std::ifstream(path));
  for (const auto& [name, parameter] : file.at("parameters").items()) {
    values_[name] = parameter.value(population, 0.0);
  }
  file.at("populations").at(population);
}

double Parameters::operator[](const std::string& name) const {
  const auto value = values_.find(name);
  if (value == values_.end()) throw std::out_of_range("no parameter " + name);
  return value->second;
}

void Parameters::Set(const std::string& name, double value) {
  (void)(*this)[name];
  values_[name] = value;
}

}  // namespace system_info
