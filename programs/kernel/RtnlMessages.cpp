#include "programs/kernel/RtnlMessages.h"

namespace kernel {

DatagramState inspectDatagram(Bytes datagram) {
   DatagramState state;
   for (ByteReader in(datagram); !in.atEnd();) {
      Message const message = takeMessage(in);
      state.last |= message.type == NLMSG_DONE || message.type == NLMSG_ERROR;
      state.interrupted |= (message.flags & NLM_F_DUMP_INTR) != 0;
      if (message.type == NLMSG_ERROR) {
         state.error = reportedErrno(message);
      }
   }
   return state;
}

}  // namespace kernel
