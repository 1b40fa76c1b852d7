#include "Zam/NewFile.h"

#include "support/Testing.h"

#include <fcntl.h>
#include <sys/file.h>
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

// What a killed process leaves has the name of what is on its way, and no lock.
TEST_F(NewFileTest, whatIsLeftIsRemovedAndNothingElse) {
   fs::create_directory(root_ / "below");
   for (char const* const name : {"place.new.12", "below/place.new.3", "other.new.4", "place.new.5x", "place.old"}) {
      std::ofstream(root_ / name) << "half";
   }
   fs::create_symlink(root_ / "place.old", root_ / "place.new.6");
   ASSERT_EQ(::mkfifo((root_ / "place.new.7").c_str(), 0600), 0);
   std::ofstream(root_ / "place.new.8") << "on its way";
   int const owner = ::open((root_ / "place.new.8").c_str(), O_RDWR);
   ASSERT_EQ(::flock(owner, LOCK_EX), 0);
   EXPECT_EQ(removeLeftFiles(dir_.fd(), "place"), 1U);
   EXPECT_EQ(removeLeftFiles(dir_.fd(), "below/place"), 1U);
   EXPECT_EQ(names("below"), std::set<std::string>());
   std::set<std::string> left{"below",       "other.new.4", "place.new.5x", "place.old",
                              "place.new.6", "place.new.7", "place.new.8"};
   EXPECT_EQ(names(""), left);
   ::close(owner);
   EXPECT_EQ(removeLeftFiles(dir_.fd(), ""), 2U);
   left.erase("other.new.4"), left.erase("place.new.8");
   EXPECT_EQ(names(""), left);
   EXPECT_EQ(removeLeftFiles(dir_.fd(), "none/"), 0U);
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
