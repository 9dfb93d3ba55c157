// The result files are lines of names and numbers; each reader is strict, so
// that a line that merely looks right does not pass.

#include "support/run_files.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kestro {

std::string name_text(const pattern_name &name) {
  return std::to_string(name.size) + '-' + std::to_string(name.index);
}

std::string read_text(const std::string &path) {
  std::ifstream file(path);
  if (!file)
    throw std::runtime_error("no file " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

static pattern_name parse_name(const std::string &word) {
  pattern_name name{-1, -1};
  if (sscanf(word.c_str(), "%d-%d", &name.size, &name.index) != 2 ||
      name_text(name) != word)
    throw std::runtime_error("no pattern name: " + word);
  return name;
}

std::vector<written_pattern> read_patterns(const std::string &path) {
  std::vector<std::string> headers;
  const std::vector<plain_graph> graphs = plain_read(read_text(path), &headers);
  std::vector<written_pattern> patterns;
  for (size_t i = 0; i < graphs.size(); i++) {
    written_pattern p{{-1, -1}, -1, graphs[i]};
    sscanf(headers[i].c_str(), "t # %d-%d, %d", &p.name.size, &p.name.index,
           &p.count);
    if ("t # " + name_text(p.name) + ", " + std::to_string(p.count) !=
        headers[i])
      throw std::runtime_error("no pattern header: " + headers[i]);
    patterns.push_back(p);
  }
  return patterns;
}

// The words of every line by the name in front of it.
static std::map<pattern_name, std::vector<std::string>>
read_name_lines(const std::string &path) {
  std::map<pattern_name, std::vector<std::string>> lines;
  std::istringstream text(read_text(path));
  for (std::string line; std::getline(text, line);) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    const auto [place, fresh] = lines.try_emplace(parse_name(word));
    if (!fresh)
      throw std::runtime_error("a second line for " + word);
    while (words >> word)
      place->second.push_back(word);
  }
  return lines;
}

std::map<pattern_name, std::vector<int>> read_tids(const std::string &path) {
  std::map<pattern_name, std::vector<int>> tids;
  for (const auto &[name, words] : read_name_lines(path))
    for (const std::string &word : words)
      tids[name].push_back(std::stoi(word));
  return tids;
}

std::map<pattern_name, std::vector<pattern_name>>
read_parents(const std::string &path) {
  std::map<pattern_name, std::vector<pattern_name>> parents;
  for (const auto &[name, words] : read_name_lines(path)) {
    parents[name]; // one-edge patterns have a line without parents
    for (const std::string &word : words)
      parents[name].push_back(parse_name(word));
  }
  return parents;
}

} // namespace kestro
