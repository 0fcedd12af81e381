// All of the library's interface.
//
// Reading order:
//   object_id.h, store_object.h, config_store_object.h   an object: its name, its members, itself
//   contexts.h, config_store.h                           storing it, reading it, transactions
//   exceptions.h, error_codes.h                          what is thrown, and the codes
//   filter_spec_object.h                                 choosing instances
//   next_boot_store.h, next_boot_update.h, pending.h,
//   apply_next_boot.h, boot_state.h                      what takes effect at the next boot
//   typed.h, and what it includes                        the same with the types of C++
//   parts.h, explain.h, taking_back.h                    what is set of it, by whom, and taking it back
//   compare_and_set.h                                    writing it, unless somebody else was faster
//   rehearsal.h                                          trying any of it on a copy of the host
// The others stand alone: backup.h, default_instances.h, diagnostics.h, doctor.h, documents.h, drift.h, dry_run.h, file.h,
// held_rows.h, host.h, kernel_options.h, key_values.h, listing.h, process.h, stored_views.h, type_administration.h. Every header
// compiles alone, as C++17.
//
// Set, Get and a filter, on a type with instances:
//
//     auto store = ConfigStore::GetStore(sGlobalNamespace);
//     // Key, group, component, instance id.
//     const ConfigStoreObjectId id("switches", "network", kDefaultComponent, "edge");
//     auto edge = std::make_shared<ConfigStoreObject>(id);
//     edge->SetValue("mtu", 9000);
//     store->Set(edge, EXTERNAL);
//     // The pointer is empty when nothing is stored.
//     int mtu = 0;
//     if (const auto stored = store->Get(id)) {
//       stored->GetValue("mtu", &mtu);
//     }
//     // A filter without an instance id: all switches that hold this MTU.
//     auto filter = std::make_shared<FilterSpecObject>(
//         ConfigStoreObjectId("switches", "network", kDefaultComponent));
//     filter->SetValue("mtu", 9000);
//     const std::vector<std::shared_ptr<ConfigStoreObject>> found = store->GetInstances(filter);
//
// tests/consumer/main.cpp runs these very lines.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/backup.h"
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/compare_and_set.h"
#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/default_instances.h"
#include "tarnconfigstore/describe.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/doctor.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/dry_run.h"
#include "tarnconfigstore/error_codes.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/file.h"
#include "tarnconfigstore/filter_spec_object.h"
#include "tarnconfigstore/held_rows.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/kernel_options.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/next_boot_store.h"
#include "tarnconfigstore/next_boot_update.h"
#include "tarnconfigstore/object_id.h"
#include "tarnconfigstore/object_text.h"
#include "tarnconfigstore/parts.h"
#include "tarnconfigstore/pending.h"
#include "tarnconfigstore/process.h"
#include "tarnconfigstore/rehearsal.h"
#include "tarnconfigstore/store_object.h"
#include "tarnconfigstore/stored_views.h"
#include "tarnconfigstore/taking_back.h"
#include "tarnconfigstore/type_administration.h"
#include "tarnconfigstore/typed.h"
#include "tarnconfigstore/typed_object.h"
#include "tarnconfigstore/typed_values.h"
