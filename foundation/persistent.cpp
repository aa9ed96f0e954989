#include "foundation/persistent.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "foundation/archive.h"
#include "foundation/mutex.h"

// --- visited marks ---

bool kcPersistent::haveVisited(const kcArchive& ar, unsigned mark) const noexcept {
  if (visitPass_ != ar.passId()) return false;
  auto end = visitMarks_.begin() + visitCount_;
  return std::find(visitMarks_.begin(), end, mark) != end;
}

void kcPersistent::setVisited(const kcArchive& ar, unsigned mark) const {
  if (visitPass_ != ar.passId()) {
    visitPass_ = ar.passId();
    visitCount_ = 0;
  }
  if (haveVisited(ar, mark)) return;
  // A class hierarchy uses one mark per level; six levels is far past any here.
  if (visitCount_ == kMaxMarks) throw std::length_error("kcPersistent: too many visit marks in one pass");
  visitMarks_[visitCount_++] = mark;
}

bool kcPersistent::beginDispatch_(kcArchive& ar, unsigned mark, unsigned char& version) {
  if (haveVisited(ar, mark)) return false;
  ar || version;
  return true;
}

// --- registry ---

namespace {
std::map<std::string, kcPersistenceRegistry::Factory, std::less<>>& table() {
  static std::map<std::string, kcPersistenceRegistry::Factory, std::less<>> classes;
  return classes;
}
}  // namespace

kcPersistenceRegistry::Exemplar::Exemplar(const char* name, Factory make) { add(name, make); }

void kcPersistenceRegistry::add(const std::string& name, Factory make) {
  kcLock lock(kcMutex::global());
  table().emplace(name, make);
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
