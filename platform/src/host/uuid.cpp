#include "platform/uuid.h"

#include <uuid/uuid.h>

#include <cstring>

char* UUID_CreateRandom() {
  uuid_t id;
  uuid_generate_random(id);
  char text[UUID_STR_LEN];
  uuid_unparse_lower(id, text);
  return strdup(text);
}
