// Plays the machines of one population, or single changes, and prints what came of it as JSON.

#include <CLI/CLI.hpp>
#include <iostream>

#include "study/fleet.h"
#include "study/scripts.h"

namespace {

int Run(int argc, char** argv) {
  std::string parameters;
  std::string population;
  int machines = 100;
  std::uint64_t seed = 1;
  system_info::Habit habit;
  std::vector<std::pair<std::string, double>> changes;

  CLI::App app("How stable and how distinct ids are");
  app.require_subcommand(1);
  app.add_subcommand("scripts", "Plays single changes");
  auto* fleet = app.add_subcommand("fleet", "Plays machines through three years");
  fleet->add_option("parameters", parameters)->required()->check(CLI::ExistingFile);
  fleet->add_option("population", population)->required();
  fleet->add_option("--machines", machines);
  fleet->add_option("--seed", seed);
  fleet->add_option("--days", habit.days, "The host asks every so many days");
  fleet->add_flag("!--not-after-events", habit.after_events, "It does not ask after events");
  fleet->add_flag("--recheck", habit.recheck, "It compares in each call");
  fleet->add_flag("!--latest-format", habit.all_formats, "It asks for no format before 2.0");
  fleet->add_option("--set", changes, "NAME VALUE: a parameter in place of that of the file");
  CLI11_PARSE(app, argc, argv);

  if (!fleet->parsed()) {
    std::cout << system_info::PlayScripts() << '\n';
    return 0;
  }
  system_info::Parameters values(parameters, population);
  for (const auto& [name, value] : changes) values.Set(name, value);
  const system_info::Draws draws = system_info::Draws(seed).For(population);
  std::cout << PlayFleet({population, values, draws, machines}, habit) << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
}
