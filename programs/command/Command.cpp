#include "programs/command/Command.h"

#include "programs/command/Session.h"

namespace kiv {
namespace {

template <class Act>
auto told(Command const& command, Act&& act) try {
   return act();
} catch (Refusal const& refusal) {
   throw std::runtime_error(refusal.line(command.words));
}

}  // namespace

ExitStatus Request::run(Session& session) const {
   if (session.isJson() && !command.hasModel) {
      throw UsageError('"' + std::string(command.words) + "\": has no JSON");
   }
   return told(command, [&] { return command.run(session, *this); });
}

void Request::configure(state::State& state) const {
   told(command, [&] { command.configure(state, *this); });
}

}  // namespace kiv
