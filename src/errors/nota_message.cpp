#include "tarnconfigstore/exceptions.h"

#include "platform/formatted_text.h"

#include <utility>

namespace HostCtl::Lib {

NotaMessage::NotaMessage(std::string id, std::string format, std::vector<std::string> arguments,
                         std::shared_ptr<const NotaMessage> next)
    : id_(std::move(id)),
      format_(std::move(format)),
      arguments_(std::move(arguments)),
      next_(std::move(next)) {}

std::string NotaMessage::ToString() const {
  std::string entries;
  for (const NotaMessage* record = this; record != nullptr; record = record->next_.get()) {
    entries.insert(
        0, "[" + record->id_ + "]: " + MsgFmt_Asprintf(record->format_, record->arguments_));
  }
  return "\nNota Stack: \n" + entries;
}

}  // namespace HostCtl::Lib
