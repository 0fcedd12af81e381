// What types say of their members, and what is stored of them, as data.
#pragma once

#include "tarnconfigstore/explain.h"

#include "json_maker.h"

namespace tarnctl {

Json::Value DescribeType(const TarnConfigStore::TypeDescription& type, JsonMaker& make);
Json::Value DescribeExplanation(const TarnConfigStore::ObjectExplanation& object, JsonMaker& make);

}  // namespace tarnctl
