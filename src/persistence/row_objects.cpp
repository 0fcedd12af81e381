#include "persistence/row_objects.h"

#include "errors/parse_failures.h"
#include "errors/raise.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/merge.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

// The value columns of a row.
constexpr std::size_t kMostLayers = 5;

}  // namespace

ObjectHandle MakeObjectFromRow(const RowMap& row, std::string_view column,
                               const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  return MergeColumns(row, {column}, id, schema);
}

ObjectHandle MergeColumns(const RowMap& row, std::initializer_list<std::string_view> columns,
                          const ConfigStoreObjectId& id, const SchemaHandle& schema, Arena* arena) {
  struct Layer {
    std::string_view column;
    std::string_view text;
  };
  std::array<Layer, kMostLayers> layers;
  std::size_t count = 0;
  std::size_t length = 0;
  for (const std::string_view column : columns) {
    if (const auto text = row.Find(column)) {
      layers.at(count++) = {column, *text};
      length += text->size();
    }
  }
  if (count == 0) {
    return nullptr;
  }
  const auto require = [&id](const Layer& layer, const Json::ParseResult& result) {
    if (!result) {
      ReportParseFailure(std::string(layer.column) + " of " + id.toString(), result, layer.text);
      ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
    }
  };
  Json::ParseResult result;
  std::shared_ptr<JsonDoc> document;
  if (count == 1) {
    document = JsonDoc::MakeOf(layers[0].text, result, arena);
    require(layers[0], result);
  } else {
    document = JsonDoc::Make(JsonDoc::CapacityFor(length));
    Json::Value& data = *document->GetJsonValuePtr();
    for (std::size_t i = 0; i < count; ++i) {
      Json::Value over;
      result = document->ParseBeside(layers[i].text, Json::Origin::STORED, i == 0 ? data : over);
      require(layers[i], result);
      if (i > 0) {
        MergeValue(std::move(over), data, schema->GetSchemaPlace(), document->GetAllocator());
      }
    }
  }
  return Internal::Access::Wrap(
      ConfigStoreObjectImpl::Make(
          id, std::move(document), schema,
          {row.Text("Version"), row.Text("CreationTime"), row.Text("ModifiedTime"),
           RevisionFrom(row.Text("Revision").data())},
          arena),
      arena);
}

ObjectHandle MakeObject(const std::string& text, const ConfigStoreObjectId& id,
                        const SchemaHandle& schema) {
  return MakeObject(CreateDocumentFromString(text), id, schema);
}

ObjectHandle MakeObject(const std::shared_ptr<JsonDoc>& data, const ConfigStoreObjectId& id,
                        const SchemaHandle& schema) {
  return Internal::Access::Wrap(
      ConfigStoreObjectImpl::Make(id, data, schema, ConfigStoreObjectImpl::Metadata()));
}

std::string_view UserColumn(const RowMap& row, int upgradeContext) {
  if (upgradeContext == 0) {
    return row.Text("Success") == "1" ? "UserValue" : "";
  }
  return row.Find("DesiredValue") ? "DesiredValue" : "UserValue";
}

ObjectHandle MakeConfirmedUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                                     const SchemaHandle& schema) {
  return MakeUserObject(row, id, schema, 0);
}

ObjectHandle MakeUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                            const SchemaHandle& schema, int upgradeContext) {
  const std::string_view column = UserColumn(row, upgradeContext);
  return column.empty() ? nullptr : MakeObjectFromRow(row, column, id, schema);
}

ObjectHandle MergeParts(const RowMap& row, std::string_view userColumn,
                        const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  return MergeColumns(row, {"CachedValue", "VitalValue", userColumn}, id, schema);
}

std::vector<ObjectHandle> ObjectsOfType(
    const DBStore::ConnectionHandle& connection, std::string_view statement,
    const ConfigStoreObjectId& type,
    const std::function<ObjectHandle(const RowMap&, const ConfigStoreObjectId&)>& make) {
  std::vector<ObjectHandle> objects;
  ConfigStoreObjectId instance = type;
  ForEachRow(connection, statement, type, [&](const RowMap& row) {
    instance.instanceId = row.Text("Identifier");
    if (ObjectHandle object = make(row, instance)) {
      objects.push_back(std::move(object));
    }
  });
  return objects;
}

std::vector<ObjectHandle> ListOf(ObjectHandle object) {
  return object ? std::vector<ObjectHandle>{std::move(object)} : std::vector<ObjectHandle>();
}

ConfigStoreObjectId IdFromRow(const RowMap& row) {
  const auto text = [&row](std::string_view column) { return std::string(row.Text(column)); };
  return {text("Name"), text("ConfigGroup"), text("Component"), text("Identifier")};
}

}  // namespace TarnConfigStore
