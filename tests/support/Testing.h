#pragma once

// What most tests use: GoogleTest, the standard library, and the helpers below. It is precompiled for all of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <regex>
#include <set>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <vector>

namespace testsupport {

// What `act` complains about; empty when it does not.
template <class Error, class Act>
std::string complaintOf(Act&& act) {
   try {
      act();
   } catch (Error const& error) {
      return error.what();
   }
   return {};
}

// A directory, in memory where possible, that goes with the test.
class TempDir {
 public:
   TempDir() {
      std::string name = (std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path()) /
                         std::filesystem::path("kivTestXXXXXX");
      path_ = ::mkdtemp(name.data());
   }
   TempDir(TempDir const&) = delete;
   TempDir& operator=(TempDir const&) = delete;
   ~TempDir() { std::filesystem::remove_all(path_); }
   std::string operator/(std::string_view name) const { return (path_ / name).string(); }

 private:
   std::filesystem::path path_;
};

}  // namespace testsupport
