#include "programs/command/Errors.h"
#include "programs/command/Help.h"
#include "programs/command/Parser.h"
#include "programs/kernel/KernelState.h"
#include "programs/kernel/RtnlBytes.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Options.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"
#include "tests/fuzz/Targets.h"

#include <linux/netlink.h>

#include <cstring>
#include <string>
#include <vector>

namespace fuzz {

namespace {

std::string textOf(Input input) {
   return {reinterpret_cast<char const*>(input.data()), input.size()};
}

}  // namespace

// What is taken is written as it was read.
void snapshot(Input input) try {
   state::State const state = state::parseSnapshot("snapshot", textOf(input));
   std::string const text = state::snapshotText(state);
   must(state::snapshotText(state::parseSnapshot("again", text)) == text);
} catch (state::JsonError const& error) {
   must(!std::string_view(error.what()).starts_with("again"));
} catch (Hive::StateError const&) {
}

void commandLine(Input input) {
   std::string const text = textOf(input);
   std::vector<std::string> words;
   for (std::size_t start = 0; start < text.size();
        start = text.find('\n', start), start += start < text.size() ? 1 : 0) {
      words.push_back(text.substr(start, text.find('\n', start) - start).c_str());
   }
   std::vector<char const*> arguments;
   for (std::string const& word : words) {
      arguments.push_back(word.c_str());
   }
   try {
      kiv::Options const options = kiv::parseOptions(arguments, {});
      (void)kiv::nextText(kiv::commands(), options.words,
                          [](kiv::NamesQuery const&) { return std::vector<kiv::Name>(); });
      (void)kiv::parseCommand(kiv::commands(), options.words);
   } catch (kiv::UsageError const& error) {
      must(std::strlen(error.what()) != 0);
   }
}

void rtnetlink(Input input) try {
   kernel::Dumps dumps;
   std::vector<std::vector<std::byte>> notices;
   std::vector<std::byte>* const parts[]{&dumps.links, &dumps.addresses, &dumps.nextHops, &dumps.routes4,
                                         &dumps.routes6};
   while (input.size() >= 3) {
      std::size_t const size = std::min<std::size_t>(input[1] | input[2] << 8U, input.size() - 3);
      auto const* const bytes = reinterpret_cast<std::byte const*>(input.data() + 3);
      auto* const part = input[0] < std::size(parts) ? parts[input[0]] : &notices.emplace_back();
      part->insert(part->end(), bytes, bytes + size);
      input = input.subspan(3 + size);
   }
   for (auto* const part : parts) {
      nlmsghdr const header{NLMSG_HDRLEN + sizeof(int), NLMSG_DONE, 0, 1, 0};
      std::byte done[NLMSG_HDRLEN + sizeof(int)]{};
      std::memcpy(done, &header, sizeof(header));
      part->insert(part->end(), done, done + sizeof(done));
   }
   kernel::Model model(dumps);
   kernel::ForwardingIds ids;
   (void)kernel::stateFrom(model, ids);
   kernel::Changes changes;
   for (auto const& notice : notices) {
      model.notify(notice, changes);
   }
   (void)kernel::stateFrom(model, ids);
} catch (kernel::RtnlError const&) {
}

}  // namespace fuzz
