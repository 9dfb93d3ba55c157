// A fresh folder for a test's files, removed with all it holds.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace kestro {

class scratch_folder {
public:
  scratch_folder() {
    std::string name =
        (std::filesystem::temp_directory_path() / "kestro-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~scratch_folder() { std::filesystem::remove_all(path_); }
  scratch_folder(const scratch_folder &) = delete;
  scratch_folder &operator=(const scratch_folder &) = delete;

  // The full name of a file in the folder.
  std::string name(const std::string &file) const {
    return (path_ / file).string();
  }
  void write(const std::string &file, const std::string &text) const {
    std::ofstream(path_ / file, std::ios::binary) << text;
  }
  std::string read(const std::string &file) const {
    std::ostringstream text;
    text << std::ifstream(path_ / file, std::ios::binary).rdbuf();
    return text.str();
  }
  bool has(const std::string &file) const {
    return std::filesystem::exists(path_ / file);
  }
  void remove(const std::string &file) const {
    std::filesystem::remove(path_ / file);
  }
  // The texts of all files by name.
  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> texts;
    for (const auto &entry : std::filesystem::directory_iterator(path_)) {
      const std::string file = entry.path().filename().string();
      texts[file] = read(file);
    }
    return texts;
  }

private:
  std::filesystem::path path_;
};

} // namespace kestro
