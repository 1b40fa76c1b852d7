#pragma once

#include "programs/follow/Mirror.h"
#include "programs/kernel/Subscription.h"

#include <poll.h>

#include <chrono>
#include <functional>
#include <string>

namespace follow {

struct Settings {
   std::string stateDir{};
   std::chrono::milliseconds audit{};               // how often the tables are compared with the kernel, at most
   std::function<void(Told const&)> tell{};         // of each change, when asked for
   std::function<void(std::string_view)> report{};  // what the user should know, in one line
};

// Keeps a state directory equal to the kernel's forwarding, in the caller's network namespace: subscribes, reads
// everything, and then applies what is notified. What notifications leave in doubt is read again, as is everything when
// some were lost; only the difference is written. Now and then the tables are compared with the kernel.
class Follower {
 public:
   explicit Follower(Settings settings);

   // Until the process is interrupted or terminated. Whatever fails is an exception; the tables are complete.
   void run();

 private:
   using Clock = std::chrono::steady_clock;

   void takeOver();
   void openMirror();
   void waitForNews(sigset_t const& whileWaiting);
   std::chrono::milliseconds timeLeft() const;
   void takeNotifications();
   void noteDoubt();
   void readAgain();
   bool isRead();
   void audit();
   bool isQuiet();
   void beat();

   Settings settings_;
   kernel::Subscription subscription_;
   state::LiveDir dir_;
   kernel::Model model_;
   std::optional<Mirror> mirror_;
   kernel::Changes changes_;
   std::optional<Clock::time_point> doubtfulSince_;
   Clock::time_point readAt_{};  // not before
   Clock::time_point auditAt_{};
   Clock::time_point beatAt_{};
   std::optional<Clock::time_point> tidyAt_;
};

}  // namespace follow
