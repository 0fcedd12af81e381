// The library with the types of C++, inline and without state of its own.
//
//     auto store = ConfigStore::GetStore(sGlobalNamespace);
//     ConfigStoreObject resolver(ParseObjectId("tarn/network/resolver"));
//
// object_text.h    ParseObjectId
// typed_values.h   object.Get<T>(key) and object.Set(key, value)
// typed_object.h   InstancesOf, to walk over, and what generated classes stand on
// describe.h       Describe(exception)
#pragma once

#include "tarnconfigstore/describe.h"
#include "tarnconfigstore/object_text.h"
#include "tarnconfigstore/typed_object.h"
#include "tarnconfigstore/typed_values.h"
