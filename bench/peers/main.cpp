// Measures the plug-in and other libraries side by side, each on one thread: the contestants of a row take turns, and
// the least time of each counts. Prints lines of fields with tabs between them, of which report.py makes tables:
//   turns, number
//   library, name, version
//   time, section, row, library, milliseconds, 1 if it may be the fastest of its row, a note on it
//   end
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <limits>
#include <map>
#include <stdexcept>

#include "bench/peers/contest.h"
#include "bench/peers/opencv_peer.h"
#include "bench/peers/pillow_peer.h"
#include "bench/peers/pixman_peer.h"
#include "bench/peers/vips_peer.h"
#include "bench/peers/worker.h"
#include "bench/peers/zimg_peer.h"

namespace zvk::peers {
namespace {

struct Options {
  bool quick = false;   // small images, one turn
  bool worker = false;  // does the tasks "prepare ROW CONTESTANT"
  std::string only;     // in the names of the rows that are measured

  int Turns() const { return quick ? 1 : 9; }
  int32_t Divisor() const { return quick ? 10 : 1; }
};

// --- agreement ---

// All do the same to the same picture, with other kernels and roundings at most.
constexpr double kMostDifference = 5;
// And it has light and dark parts.
constexpr double kLeastRange = 10;

void CheckLevels(const std::string &name, const std::vector<double> &levels, const std::vector<double> &ours) {
  const auto [least, most] = std::ranges::minmax(levels);
  if (!(most - least >= kLeastRange)) throw std::runtime_error(name + ": there is nothing in the result");
  if (levels.size() != ours.size()) throw std::runtime_error(name + ": the result has other channels than ours");
  for (size_t i = 0; i < levels.size(); ++i) {
    if (std::abs(levels[i] - ours[i]) <= kMostDifference) continue;
    throw std::runtime_error(name + ": the result is not ours, " + std::to_string(levels[i]) + " against " +
                             std::to_string(ours[i]) + " in tile level " + std::to_string(i));
  }
}

// --- measuring ---

// This program as a worker on the level of instructions given.
Worker &WorkerAt(const std::string &cpu, const Options &options) {
  static std::map<std::string, Worker> workers;
  const auto found = workers.find(cpu);
  if (found != workers.end()) return found->second;
  std::vector<std::string> words{"env", "PICTUREZVK_CPU=" + cpu, std::filesystem::read_symlink("/proc/self/exe"),
                                 "--worker"};
  if (options.quick) words.emplace_back("--quick");
  return workers.try_emplace(cpu, std::move(words)).first->second;
}

void Measure(size_t index, const Row &row, const Options &options) {
  std::cerr << row.section << ": " << row.name << std::endl;
  std::vector<Task> tasks;
  std::vector<double> ours;
  for (size_t i = 0; i < row.contestants.size(); ++i) {
    const Contestant &contestant = row.contestants[i];
    tasks.push_back(contestant.cpu.empty()
                        ? contestant.prepare()
                        : WorkerAt(contestant.cpu, options).Prepare(std::to_string(index) + " " + std::to_string(i)));
    tasks[i].run();
    const std::vector<double> levels = tasks[i].levels();
    if (i == 0) ours = levels;
    CheckLevels(row.name + ", " + contestant.library, levels, ours);
  }

  std::vector<double> best(tasks.size(), std::numeric_limits<double>::infinity());
  for (int turn = 0; turn < options.Turns(); ++turn) {
    for (size_t i = 0; i < tasks.size(); ++i) {
      const Seconds seconds = tasks[i].run();
      best[i] = std::min(best[i], row.clock == Clock::Wall ? seconds.wall : seconds.processor);
    }
  }
  for (size_t i = 0; i < tasks.size(); ++i) {
    const Note *const note = row.contestants[i].note;
    std::cout << "time\t" << row.section << '\t' << row.name << '\t' << row.contestants[i].library << '\t'
              << best[i] * 1e3 << '\t' << (note == nullptr || note->comparable) << '\t'
              << (note == nullptr ? "" : note->text) << std::endl;
  }
}

Task PrepareAsWorker(const std::vector<Row> &rows, const std::string &words) {
  char *end = nullptr;
  const size_t row = std::strtoul(words.c_str(), &end, 10), contestant = std::strtoul(end, nullptr, 10);
  return rows.at(row).contestants.at(contestant).prepare();
}

void Run(const Options &options) {
  const std::vector<Row> rows = Rows(options.Divisor());
  const auto isWanted = [&](const Row &row) { return row.name.find(options.only) != std::string::npos; };
  if (options.worker) {
    Work([&](const std::string &words) { return PrepareAsWorker(rows, words); });
    return;
  }
  if (std::ranges::none_of(rows, isWanted)) throw std::runtime_error("no task has " + options.only + " in its name");
  std::cout << "turns\t" << options.Turns() << "\nlibrary\tzimg\t" << ZimgVersion() << "\nlibrary\tPillow\t"
            << PillowVersion() << "\nlibrary\tlibvips\t" << VipsVersion() << "\nlibrary\tOpenCV\t" << OpenCVVersion()
            << "\nlibrary\tpixman\t" << PixmanVersion() << std::endl;
  for (size_t i = 0; i < rows.size(); ++i) {
    if (isWanted(rows[i])) Measure(i, rows[i], options);
  }
  std::cout << "end" << std::endl;
}

}  // namespace
}  // namespace zvk::peers

int main(int count, char **arguments) {
  zvk::peers::Options options;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument == "--quick") {
      options.quick = true;
    } else if (argument == "--worker") {
      options.worker = true;
    } else if (argument.starts_with("--only=")) {
      options.only = argument.substr(7);
    } else {
      std::cerr << "bench_peers: unknown option " << argument << '\n';
      return 2;
    }
  }
  try {
    zvk::peers::Run(options);
  } catch (const std::exception &error) {
    std::cerr << "bench_peers: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
