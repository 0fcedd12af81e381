// What is shown of objects: the one road by which their data gets to standard output.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "given/object_name.h"
#include "json/secrets.h"
#include "json_maker.h"
#include "store/type_schema.h"

#include <optional>

namespace tarnctl {

/// Makes JSON of objects, with "***" for each secret unless it is to be revealed. Keeps the type that
/// it has read last, as lists are of one type mostly.
class ShownData {
 public:
  /// \param given  of a verb that takes RevealArgument
  explicit ShownData(const Given& given);

  /// All that is shown of an object. Raises what TypeSchema raises, as TypeOf does.
  Json::Value Of(const TarnConfigStore::ConfigStoreObject& object, JsonMaker& make);

  /// Valid until the next call.
  const TypeSchema& TypeOf(const TarnConfigStore::ConfigStoreObject& object);

  /// A way into an object's data that ends at the secret that it leads into: what lies in there is
  /// not told, and neither is whether it does.
  struct Way {
    MemberPath path;
    Json::Sight end;
  };
  Way WayTo(const Json::Value& data, const MemberPath& place, const TypeSchema& type) const;

  /// Puts what is shown of a member into `shown`, as it reads: the default where it is absent. False
  /// where there is neither.
  bool Read(const Json::Value& data, const MemberPath& place, const TypeSchema& type,
            JsonMaker& make, Json::Value& shown) const;

  /// What is shown of the value at the end of a way, be it stored or a default.
  Json::Value At(const Way& way, const Json::Value& value, JsonMaker& make) const;

 private:
  bool reveals_;
  TarnConfigStore::ConfigStoreObjectId typeId_;
  std::optional<TypeSchema> type_;
};

}  // namespace tarnctl
