#include "programs/follow/Follower.h"

#include "cliprint/Interrupt.h"
#include "programs/follow/Notify.h"
#include "programs/kernel/RtnlSocket.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <ctime>

namespace follow {

namespace {

using namespace std::chrono_literals;

constexpr auto settleTime = 10ms;  // of what comes in bursts, such as a link that goes down
constexpr auto beatTime = 1s;
constexpr auto quietTime = 50ms;        // between what is notified and what a dump shows
constexpr int auditShare = 100;         // an audit is done for a hundredth of the time
constexpr std::size_t maxBatches = 64;  // that are applied together

// Blocks what ends the process, so that it is noticed only where it is waited for.
class EndingSignals {
 public:
   EndingSignals() {
      sigset_t ending;
      sigemptyset(&ending);
      sigaddset(&ending, SIGINT);
      sigaddset(&ending, SIGTERM);
      ::pthread_sigmask(SIG_BLOCK, &ending, &before_);
   }
   ~EndingSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
   EndingSignals(EndingSignals const&) = delete;
   EndingSignals& operator=(EndingSignals const&) = delete;

   sigset_t const& before() const { return before_; }

 private:
   sigset_t before_{};
};

}  // namespace

Follower::Follower(Settings settings)
    : settings_(std::move(settings)),
      subscription_(settings_.fpm ? kernel::Subscription::Of::entities : kernel::Subscription::Of::everything),
      dir_(settings_.stateDir, settings_.fpm ? "fpm " + settings_.fpm->text() : "kernel") {
   if (settings_.fpm) {
      fpm_.emplace(*settings_.fpm, settings_.report);
      model_.routesAreOf(kernel::Model::RoutesOf::daemon);
   }
}

void Follower::run() {
   EndingSignals const signals;
   takeOver();
   notifySystem("READY=1");
   while (!cliprint::interrupted()) {
      waitForNews(signals.before());
      takeNotifications();
      if (fpm_) {
         takeFromDaemon();
      }
      if (doubtfulSince_ && Clock::now() >= readAt_) {
         readAgain();
      }
      if (Clock::now() >= auditAt_) {
         audit();
      }
      if (tidyAt_ && Clock::now() >= *tidyAt_) {
         tidyAt_ = mirror_->tidy();
      }
      beat();
   }
   notifySystem("STOPPING=1");
}

void Follower::takeOver() {
   while (!isRead()) {
   }
   try {
      openMirror();
   } catch (std::runtime_error const& error) {
      settings_.report(std::string(error.what()) + "; the state is made anew");
      mirror_.reset();
      dir_.startAnew();
      openMirror();
   }
   dir_.published();
   mirror_->tellIs(settings_.tell);
   tidyAt_ = mirror_->tidy();
   auditAt_ = Clock::now() + settings_.audit;
}

void Follower::openMirror() {
   mirror_.emplace(dir_, model_);
   mirror_->unknownStays(fpm_.has_value());
   mirror_->applyAll();
}

void Follower::waitForNews(sigset_t const& whileWaiting) {
   std::array<pollfd, 3> waiting{{{.fd = subscription_.fd(), .events = POLLIN, .revents = 0},
                                  {.fd = fpm_ ? fpm_->listener() : -1, .events = POLLIN, .revents = 0},
                                  {.fd = fpm_ ? fpm_->connection() : -1, .events = POLLIN, .revents = 0}}};
   auto const left = std::chrono::duration_cast<std::chrono::nanoseconds>(timeLeft());
   timespec const timeout{.tv_sec = left / 1s, .tv_nsec = (left % 1s).count()};
   ::ppoll(waiting.data(), waiting.size(), &timeout, &whileWaiting);
}

std::chrono::milliseconds Follower::timeLeft() const {
   auto until = std::min(auditAt_, beatAt_);
   until = doubtfulSince_ ? std::min(until, readAt_) : until;
   until = tidyAt_ ? std::min(until, *tidyAt_) : until;
   until = graceEnds_ ? std::min(until, *graceEnds_) : until;
   return std::max(std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), 0ms);
}

void Follower::takeNotifications() {
   using Received = kernel::Subscription::Received;
   try {
      auto received = Received::some;
      for (std::size_t i = 0; i < maxBatches && received == Received::some; ++i) {
         received = subscription_.receive([&](kernel::Bytes datagram) { model_.notify(datagram, changes_); });
      }
      changes_.doubt |= received == Received::overrun;
      mirror_->apply(changes_);
   } catch (kernel::RtnlError const&) {
      changes_.doubt = true;  // such as two links of one name, while one is renamed
   }
   if (changes_.doubt) {
      noteDoubt();
   }
   if (!changes_.routes.empty() && !tidyAt_) {
      tidyAt_ = mirror_->tidy();
   }
   changes_ = {};
}

// What it takes away and gives again at once is one change.
void Follower::takeFromDaemon() {
   fpm_->receive([&](kernel::Bytes messages) { model_.notify(messages, changes_); });
   mirror_->apply(changes_);
   if (!changes_.routes.empty() && !tidyAt_) {
      tidyAt_ = mirror_->tidy();
   }
   changes_ = {};
   if (fpm_->isNewConnection()) {
      daemonIsNew();
   }
   if (graceEnds_ && Clock::now() >= *graceEnds_) {
      graceEnds_.reset();
      mirror_->unknownStays(false);
      mirror_->applyAll();
   }
}

void Follower::daemonIsNew() {
   model_.routesDel();
   mirror_->unknownStays(true);
   graceEnds_ = Clock::now() + settings_.grace;
}

void Follower::noteDoubt() {
   if (!doubtfulSince_) {
      doubtfulSince_ = Clock::now();
      readAt_ = std::max(readAt_, *doubtfulSince_ + settleTime);
   }
}

// Takes no more than half of the time, however often links change.
void Follower::readAgain() {
   auto const began = Clock::now();
   doubtfulSince_.reset();
   if (isRead()) {
      ++dir_.status().dumpsAgain;
      mirror_->applyAll();
   } else {
      noteDoubt();
   }
   readAt_ = Clock::now() + std::max<Clock::duration>(Clock::now() - began, settleTime);
   tidyAt_ = mirror_->tidy();
}

// False when it changed all the time.
bool Follower::isRead() {
   try {
      if (fpm_) {
         model_.entitiesAre(kernel::readEntityDumps());
      } else {
         model_ = kernel::Model(kernel::readDumps());
      }
      return true;
   } catch (kernel::DumpInterrupted const&) {
      return false;
   }
}

// Only where nothing changed meanwhile is a difference a drift.
void Follower::audit() {
   auto const began = Clock::now();
   if (!fpm_ && !doubtfulSince_ && isQuiet() && isRead() && isQuiet()) {
      auto& status = dir_.status();
      U64 const drift = mirror_->applyAll();
      ++status.audits;
      status.drift += drift;
      if (drift != 0) {
         settings_.report(std::to_string(drift) + " routes were not as the kernel has them");
      }
   }
   auditAt_ = Clock::now() + std::max<Clock::duration>((Clock::now() - began) * auditShare, settings_.audit);
}

bool Follower::isQuiet() {
   pollfd waiting{.fd = subscription_.fd(), .events = POLLIN, .revents = 0};
   return ::poll(&waiting, 1, static_cast<int>(quietTime / 1ms)) == 0;
}

void Follower::beat() {
   if (Clock::now() < beatAt_) {
      return;
   }
   if (!dir_.isInPlace()) {
      throw Hive::StateError(settings_.stateDir + ": was put in another place");
   }
   dir_.status().lastSeen = state::systemTime();
   beatAt_ = Clock::now() + beatTime;
}

}  // namespace follow
