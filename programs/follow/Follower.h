#pragma once

#include "programs/follow/FpmServer.h"
#include "programs/follow/Mirror.h"
#include "programs/kernel/Subscription.h"

#include <poll.h>

#include <chrono>
#include <functional>
#include <string>

namespace follow {

struct Settings {
   std::string stateDir{};
   std::optional<FpmAddress> fpm{};                 // where routes come from a daemon instead of the kernel
   std::chrono::seconds grace{};                    // for a daemon to repeat its routes when it is back
   std::chrono::milliseconds audit{};               // how often the tables are compared with the kernel, at most
   std::function<void(Told const&)> tell{};         // of each change, when asked for
   std::function<void(std::string_view)> report{};  // what the user should know, in one line
};

// Keeps a state directory equal to its source. That is the kernel's forwarding, in the caller's network namespace:
// subscribes, reads everything, and then applies what is notified. What notifications leave in doubt is read again, as
// is everything when some were lost; only the difference is written. Now and then the tables are compared with the
// kernel.
//
// Or the routes come from a routing daemon that connects, and only links and addresses from the kernel. Its routes stay
// when it goes; when it is back, those that it does not repeat within a time of grace go.
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
   void takeFromDaemon();
   void daemonIsNew();
   void noteDoubt();
   void readAgain();
   bool isRead();
   void audit();
   bool isQuiet();
   void beat();

   Settings settings_;
   kernel::Subscription subscription_;
   std::optional<FpmServer> fpm_;
   state::LiveDir dir_;
   kernel::Model model_;
   std::optional<Mirror> mirror_;
   kernel::Changes changes_;
   std::optional<Clock::time_point> doubtfulSince_;
   Clock::time_point readAt_{};  // not before
   Clock::time_point auditAt_{};
   Clock::time_point beatAt_{};
   std::optional<Clock::time_point> tidyAt_;
   std::optional<Clock::time_point> graceEnds_;
};

}  // namespace follow
