#pragma once

#include "programs/kernel/RtnlBytes.h"

#include <linux/netlink.h>
#include <cerrno>
#include <cstring>

// The envelope of a dump: its messages, checked for length, kind and the kernel's own complaints.
namespace kernel {

struct Message {
   U16 type = 0;
   U16 flags = 0;
   Bytes payload;
};

constexpr int maxErrno = 4095;

inline Message takeMessage(ByteReader& in) {
   auto const header = in.peek<nlmsghdr>();
   if (header.nlmsg_len < sizeof(nlmsghdr)) {
      throw RtnlError("rtnetlink: message shorter than its header");
   }
   Bytes const payload = in.takePadded(header.nlmsg_len).subspan(sizeof(nlmsghdr));
   return {header.nlmsg_type, header.nlmsg_flags, payload};
}

// The errno that NLMSG_ERROR and NLMSG_DONE report, negated, at the head of their payload; 0 for none.
inline int reportedErrno(Message const& message) {
   S32 const code = ByteReader(message.payload).peek<S32>();
   return code > -maxErrno && code < 0 ? -code : 0;
}

inline void throwReported(Message const& message) {
   if (int const error = reportedErrno(message); error != 0) {
      throw RtnlError(std::string("rtnetlink: the kernel answers: ") + std::strerror(error));
   }
}

// Calls visit(message) for each message of `type` up to NLMSG_DONE, with which the dump must end. A dump is the bytes
// of its messages one after another, as read from the socket: one that is cut off or carries the kernel's own error
// throws RtnlError, one that the kernel marked as inconsistent DumpInterrupted.
template <class Visit>
void forEachMessage(Bytes dump, U16 type, Visit&& visit) {
   for (ByteReader in(dump); !in.atEnd();) {
      Message const message = takeMessage(in);
      if ((message.flags & NLM_F_DUMP_INTR) != 0) {
         throw DumpInterrupted("rtnetlink: what is dumped keeps changing");
      }
      if (message.type == NLMSG_DONE && in.atEnd()) {
         return throwReported(message);
      }
      if (message.type == NLMSG_ERROR) {
         throwReported(message);
      } else if (message.type == type) {
         visit(message);
      } else if (message.type != NLMSG_NOOP) {
         throw RtnlError("rtnetlink: unexpected message of type " + std::to_string(message.type));
      }
   }
   throw RtnlError("rtnetlink: dump cut off");
}

// What one datagram of a dump says about the dump.
struct DatagramState {
   bool last = false;         // it ends the dump: with NLMSG_DONE or an error
   bool interrupted = false;  // what is dumped changed meanwhile
   int error = 0;             // errno that the kernel answers instead of a dump
};
DatagramState inspectDatagram(Bytes datagram);

}  // namespace kernel
