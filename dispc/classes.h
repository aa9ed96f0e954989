// The display core's persistent classes, handed to the persistence registry.
//
// Every header of a persistent display-core class includes this one, so a
// program that uses any of them links the whole list: in a static build that
// is what lets an archive bring back a class the program never names.
#pragma once

#include <span>

#include "foundation/persistent.h"

[[nodiscard]] std::span<const kcPersistenceRegistry::Exemplar* const> kfDispcClasses();

namespace kcDispcDetail {
inline const kcPersistenceRegistry::Module kClasses{kfDispcClasses()};
}  // namespace kcDispcDetail
