// The process's own changes of the schema store.
#pragma once

namespace TarnSchemaStore {

/// Makes the next look-up look at the schema store's file again. Called by whoever has changed it.
void ForgetCurrentTypes() noexcept;

}  // namespace TarnSchemaStore
