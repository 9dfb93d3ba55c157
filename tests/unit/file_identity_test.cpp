#include "base/file_identity.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/open_file.h"
#include "support/scratch_folder.h"
#include "support/streams.h"

namespace kestro {
namespace {

// Files "a" and "b" with equal text, and names for "a" that are links.
class FileIdentity : public testing::Test {
protected:
  FileIdentity() {
    folder.write("a", "text");
    folder.write("b", "text");
    std::filesystem::create_hard_link(folder.name("a"), folder.name("hard"));
    std::filesystem::create_symlink("a", folder.name("soft"));
    std::filesystem::create_symlink("soft", folder.name("softer"));
  }
  file_identity of(const char *file) const {
    return file_identity(folder.name(file).c_str());
  }

  scratch_folder folder;
};

} // namespace

TEST_F(FileIdentity, OneNameIsTheSameFile) {
  EXPECT_TRUE(of("a").is_same(of("a")));
  EXPECT_TRUE(of("a").is_same(of("./a")));
}

TEST_F(FileIdentity, LinksAreTheSameFile) {
  EXPECT_TRUE(of("a").is_same(of("hard")));
  EXPECT_TRUE(of("soft").is_same(of("a")));
  EXPECT_TRUE(of("softer").is_same(of("hard")));
}

TEST_F(FileIdentity, EqualTextIsNotTheSameFile) {
  EXPECT_FALSE(of("a").is_same(of("b")));
}

TEST_F(FileIdentity, MissingFilesAreNoOne) {
  EXPECT_FALSE(of("none").is_same(of("none")));
  EXPECT_FALSE(of("none").is_same(of("a")));
}

TEST_F(FileIdentity, DevicesAndFoldersAreNoOne) {
  const file_identity device("/dev/null");
  EXPECT_FALSE(device.is_same(device));
  EXPECT_FALSE(of(".").is_same(of(".")));
}

TEST_F(FileIdentity, StreamIsTheFileBehindIt) {
  const file_ptr stream(open_file(folder.name("soft").c_str(), "r"));
  EXPECT_TRUE(file_identity(stream.get()).is_same(of("a")));
  EXPECT_FALSE(file_identity(stream.get()).is_same(of("b")));
}

TEST_F(FileIdentity, StreamIntoMemoryIsNoOne) {
  const std::string text = "text";
  const file_ptr stream = reading(text);
  const file_identity memory(stream.get());
  EXPECT_FALSE(memory.is_same(memory));
}

} // namespace kestro
