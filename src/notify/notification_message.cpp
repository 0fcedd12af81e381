#include "notify/notification_message.h"

#include <string_view>

namespace TarnConfigStore {
namespace {

constexpr std::string_view kBeforeName =
    R"({"method":"invoke","id":"9","params":{"serviceId":")" TARN_NOTIFY_SERVICE_ID
    R"(","operationId":"notify","input":{"STRUCTURE":{"operation-input":{"identifiers":[")";
constexpr std::string_view kBeforeProcess = R"("],"cartel_id":)";
constexpr std::string_view kAfterProcess =
    R"(}}},"ctx":{"securityCtx":{"schemeId":")" TARN_NOTIFY_SCHEME_ID R"("}}},"jsonrpc":"2.0"})";

constexpr std::string_view kBeforeLength = "POST /api HTTP/1.1\r\nContent-Length: ";
constexpr std::string_view kAfterLength = "\r\nContent-Type: application/json\r\n\r\n";

}  // namespace

std::string MakeNotificationMessage(const std::string& typeName, pid_t process) {
  const std::string processText = std::to_string(process);
  const std::size_t bodyLength = kBeforeName.size() + typeName.size() + kBeforeProcess.size() +
                                 processText.size() + kAfterProcess.size();
  const std::string lengthText = std::to_string(bodyLength);
  std::string message;
  message.reserve(kBeforeLength.size() + lengthText.size() + kAfterLength.size() + bodyLength);
  for (const std::string_view part :
       {kBeforeLength, std::string_view(lengthText), kAfterLength, kBeforeName,
        std::string_view(typeName), kBeforeProcess, std::string_view(processText), kAfterProcess}) {
    message += part;
  }
  return message;
}

}  // namespace TarnConfigStore
