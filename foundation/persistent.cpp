#include "foundation/persistent.h"

#include <map>

#include "foundation/archive.h"
#include "foundation/mutex.h"

// --- visited marks ---

unsigned kcPersistent::newMark_() noexcept {
  // Marks count from 1, so that 0 is never a class's.
  static std::atomic<unsigned> next{1};
  return next++;
}

bool kcPersistent::haveVisited(const kcArchive& ar, unsigned mark) const noexcept {
  return ar.visited_(this, mark);
}

void kcPersistent::setVisited(kcArchive& ar, unsigned mark) const {
  if (ar.inTransfer_(this)) ar.visit_(this, mark);
}

// --- registry ---

namespace {
using Table = std::map<std::string, kcPersistenceRegistry::Factory, std::less<>>;

void addLocked(Table& table, std::span<const kcPersistenceRegistry::Exemplar* const> classes) {
  for (const auto* exemplar : classes) table.emplace(exemplar->name(), exemplar->factory());
}

// Callers hold the global mutex. The foundation's list is registered here
// rather than by the exemplars' start-up objects, so a static link that drops
// those still finds every class.
Table& table() {
  static Table classes = [] {
    Table t;
    addLocked(t, kfFoundationClasses());
    return t;
  }();
  return classes;
}
}  // namespace

kcPersistenceRegistry::Registrar::Registrar(const Exemplar& exemplar) {
  add(exemplar.name(), exemplar.factory());
}

kcPersistenceRegistry::Module::Module(std::span<const Exemplar* const> classes) { add(classes); }

void kcPersistenceRegistry::add(const std::string& name, Factory make) {
  kcLock lock(kcMutex::global());
  table().emplace(name, make);
}

void kcPersistenceRegistry::add(std::span<const Exemplar* const> classes) {
  kcLock lock(kcMutex::global());
  addLocked(table(), classes);
}

kcPersistent* kcPersistenceRegistry::make(const std::string& name) {
  Factory factory = nullptr;
  {
    kcLock lock(kcMutex::global());
    auto it = table().find(name);
    if (it == table().end()) return nullptr;
    factory = it->second;
  }
  return factory();
}

bool kcPersistenceRegistry::knows(const std::string& name) {
  kcLock lock(kcMutex::global());
  return table().contains(name);
}

std::vector<std::string> kcPersistenceRegistry::names() {
  kcLock lock(kcMutex::global());
  std::vector<std::string> out;
  for (const auto& [name, factory] : table()) out.push_back(name);
  return out;
}
