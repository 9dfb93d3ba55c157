// Runs in a process that has set a locale: as a program with a window does for
// its user, and the library must not notice.

#include <clocale>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/program.h"
#include "support/random_database.h"
#include "support/scratch_folder.h"

namespace kestro {
namespace {

// Sets a locale made for the test, and the plain one at its end.
class locale_scope {
public:
  explicit locale_scope(const std::string &language) {
    const std::string name = language + ".UTF-8";
    const std::string make = "localedef -i " + language + " -f UTF-8 " +
                             shell_quoted(folder_.name(name)) + " >/dev/null";
    made_ = system(make.c_str()) == 0;
    setenv("LOCPATH", folder_.name(".").c_str(), 1);
    set_ = setlocale(LC_ALL, name.c_str());
  }
  ~locale_scope() {
    setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
  }
  locale_scope(const locale_scope &) = delete;
  locale_scope &operator=(const locale_scope &) = delete;
  bool is_set() const { return made_ && set_; }

private:
  scratch_folder folder_;
  bool made_;
  bool set_;
};

// Report and files of a run with labels of all capitals, without their times.
std::string results(const std::string &database) {
  const scratch_folder folder;
  folder.write("db.g", database);
  const std::string input = folder.name("db.g");
  options o;
  o.input_file = input.c_str();
  o.support = 12.5;
  o.maximal = o.tid_list = o.candidates = 1;
  std::string text = run_here(&o);
  for (const char *file : {"db.fp", "db.pc", "db.tid", "db.c.g"})
    text += folder.read(file);
  for (size_t at; (at = text.find(folder.name(""))) != std::string::npos;)
    text.erase(at, folder.name("").size());
  for (size_t at; (at = text.find("Elapsed")) != std::string::npos;)
    text.erase(at, text.find('\n', at) - at);
  return text;
}

// The support that a command line sets.
double support_of(std::string number) {
  char program[] = "kestro";
  char option[] = "-s";
  char input[] = "db.g";
  char *argv[] = {program, option, number.data(), input, nullptr};
  options o;
  EXPECT_EQ(parse_command_line(4, argv, &o), command::run);
  return o.support;
}

} // namespace

TEST(Locale, GermanAndTurkishGiveTheSameBytes) {
  dice chance(8);
  std::string database =
      database_text(random_database(&chance, 8), random_style(&chance));
  database += "T # I\nV 0 I\nV 1 \u0130\nU 0 1 \u0131\n"; // dotted, dotless
  const std::string expected = results(database);
  EXPECT_NE(expected.find("12.5%"), std::string::npos);
  for (const char *language : {"de_DE", "tr_TR"}) {
    const locale_scope locale(language);
    ASSERT_TRUE(locale.is_set()) << language;
    EXPECT_STREQ(localeconv()->decimal_point, ",");
    EXPECT_EQ(results(database), expected) << language;
    EXPECT_EQ(support_of("12.5"), 12.5) << language;
  }
}

} // namespace kestro
