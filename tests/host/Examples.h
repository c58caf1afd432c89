#pragma once
// Recorded examples: the whole output of a tool for a small events file,
// kept as data in an examples folder. Example NAME is NAME.args (the options
// of one run a line, "#" lines are notes, "@DIR" stands for the folder),
// NAME.events (added as the last argument when it exists) and NAME.expected:
// for each run "$ OPTIONS", standard output with the wall-clock figures
// taken out, "exit N", then standard error, each line after "stderr: ".
// Paths show as "@DIR" and "@SRC". With PELORIN_UPDATE_EXAMPLES=1 the
// .expected files are written from the output instead.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "ToolProcess.h"

namespace pelorin_tool_test {

inline std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// What a run shows, in the form of the .expected files: without the wall
// times at the start of readable lines and the figures that depend on them
// (wall time, mean speed, lag, waits on the online traffic service).
inline std::string ExampleOutput(const ToolProcess& tool, int status, const std::string& folder) {
  static const std::regex kWallTime("^ *[0-9]+\\.[0-9]{3}  ");
  static const std::regex kJsonFigures(
      "\"(t|wallSeconds|meanSpeed|lagSeconds|longestOnlineWait(Seconds|Line))\":[-+.0-9eE]+,?");
  static const std::regex kTextFigures(
      "(wall time |mean speed |meanSpeed=|wallSeconds=|lagSeconds=)[0-9.]+");
  static const std::regex kDurations("(at the end: |service: )[0-9.hms]+( \\(line [0-9]+\\))?");
  std::string text;
  const auto add = [&text](const std::string& prefix, const std::string& lines) {
    std::istringstream split(lines);
    for (std::string line; std::getline(split, line);) {
      line = std::regex_replace(std::regex_replace(line, kWallTime, ""), kJsonFigures, "");
      line = std::regex_replace(line, kDurations, "$1#");
      text += prefix + std::regex_replace(line, kTextFigures, "$1#") + "\n";
    }
  };
  add("", tool.Output());
  text += "exit " + std::to_string(status) + "\n";
  add("stderr: ", tool.Stderr());
  ReplaceAll(text, ",}", "}");
  ReplaceAll(text, folder, "@DIR");
  ReplaceAll(text, PELORIN_SOURCE_DIR, "@SRC");
  return text;
}

inline void RunExamples(const std::string& program, const std::string& folder) {
  const bool update = std::getenv("PELORIN_UPDATE_EXAMPLES") != nullptr;
  int examples = 0;
  for (const std::string& file : ListTree(folder)) {
    if (file.size() < 5 || file.compare(file.size() - 5, 5, ".args") != 0) continue;
    const std::string name = folder + file.substr(0, file.size() - 5);
    const bool hasEvents = access((name + ".events").c_str(), F_OK) == 0;
    std::istringstream lines(ReadFile(name + ".args"));
    std::string output;
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty() && line[0] == '#') continue;
      std::vector<std::string> args;
      std::istringstream words(line);
      for (std::string word; words >> word;) {
        ReplaceAll(word, "@DIR", folder);
        args.push_back(word);
      }
      if (hasEvents) args.push_back(name + ".events");
      ToolProcess tool;
      output += "$ " + line + "\n" + ExampleOutput(tool, RunTool(program, args, &tool), folder);
      EXPECT_TRUE(tool.TempDirEmpty()) << line;
    }
    ++examples;
    if (update) std::ofstream(name + ".expected", std::ios::binary) << output;
    EXPECT_EQ(ReadFile(name + ".expected"), output) << file;
  }
  EXPECT_GT(examples, 0) << "no example in " << folder;
}

}  // namespace pelorin_tool_test
