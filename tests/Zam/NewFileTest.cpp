#include "Zam/NewFile.h"

#include "support/Testing.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <system_error>

namespace Zam {

namespace {

namespace fs = std::filesystem;

class NewFileTest : public ::testing::Test {
 protected:
   std::string text(std::string const& name) const {
      std::ifstream file(root_ / name);
      return {std::istreambuf_iterator<char>(file), {}};
   }
   auto names(std::string const& dir) const {
      std::set<std::string> found;
      for (auto const& entry : fs::directory_iterator(root_ / dir)) {
         found.insert(entry.path().filename().string());
      }
      return found;
   }

   testsupport::TempDir root_;
   Directory dir_{root_ / ""};
};

TEST_F(NewFileTest, appearsWholeOrNotAtAllAndLeavesNothingBeside) {
   std::ofstream(root_ / "victim") << "theirs";
   fs::create_directory(root_ / "below");
   for (std::string const place : {"new", "there", "link", "below/new"}) {
      std::ofstream(root_ / "there") << "earlier";
      fs::remove(root_ / "link");
      fs::create_symlink(root_ / "victim", root_ / "link");
      std::string const before = text(place);
      { NewFile(dir_.fd(), place).append("never"); }
      EXPECT_EQ(text(place), before);
      NewFile file(dir_.fd(), place);
      file.append("whole");
      EXPECT_EQ(text(place), before);
      place == "new" ? file.putInPlaceDurably() : file.putInPlace();
      EXPECT_EQ(text(place), "whole") << place;
      EXPECT_FALSE(fs::is_symlink(root_ / place));
   }
   EXPECT_EQ(text("victim"), "theirs");
   EXPECT_EQ(names(""), (std::set<std::string>{"below", "link", "new", "there", "victim"}));
   EXPECT_EQ(names("below"), std::set<std::string>{"new"});
}

TEST_F(NewFileTest, nobodyElseMayWriteWhateverTheUmask) {
   for (auto const& [umask, mode, expected] :
        {std::tuple{0U, 0644U, 0644U}, {0077U, 0644U, 0600U}, {0U, 0600U, 0600U}}) {
      mode_t const before = ::umask(umask);
      NewFile(dir_.fd(), "file", mode).putInPlace();
      ::umask(before);
      struct stat status {};
      ASSERT_EQ(::stat((root_ / "file").c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 0777U, expected);
   }
}

TEST_F(NewFileTest, saysWhatFailedAndKeepsWhatIsThere) {
   fs::create_directory(root_ / "full");
   std::ofstream(root_ / "full/file") << "theirs";
   auto const said = [&](std::string const& place) {
      return testsupport::complaintOf<std::system_error>([&] { NewFile(dir_.fd(), place).putInPlace(); });
   };
   EXPECT_EQ(said("none/file"), "cannot be made: No such file or directory");
   EXPECT_EQ(said("full"), "cannot be put in place: Is a directory");
   EXPECT_EQ(names(""), std::set<std::string>{"full"});
   EXPECT_EQ(text("full/file"), "theirs");
}

}  // namespace

}  // namespace Zam
