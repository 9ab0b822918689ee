#include "kestrelink/platform/Uuid.h"

#include <atomic>

#include <uuid/uuid.h>

namespace kestrelink {
namespace {

std::atomic<UuidSource> source{nullptr};

}  // namespace

std::string randomUuid() {
  if (const UuidSource standIn = source.load()) return standIn();
  uuid_t uuid;
  uuid_generate_random(uuid);
  char text[UUID_STR_LEN];
  uuid_unparse_upper(uuid, text);
  return text;
}

void setUuidSourceForTesting(UuidSource newSource) noexcept { source = newSource; }

}  // namespace kestrelink
