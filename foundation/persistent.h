// Persistence: the base of every class that travels through a kcArchive, and
// the registry that recreates such objects from their class names.
//
// A persistent class archives itself with one symmetric routine, run at most
// once per archive pass:
//
//   void kcThing::dispatchSerialize(kcArchive& ar) {
//     dispatchOnce_(ar, kMark, kVersion, [&](unsigned char version) { serialize_(ar, version); });
//   }
//
// where serialize_ archives the bases first, then the class's own fields.
//
// and registers itself with KC_DECLARE_PERSISTENT in the class and
// KC_DEFINE_PERSISTENT in its source file.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class kcArchive;

class kcPersistent {
 public:
  kcPersistent() noexcept = default;
  // Copies get fresh bookkeeping; assignment keeps the target's.
  kcPersistent(const kcPersistent&) noexcept {}
  kcPersistent& operator=(const kcPersistent&) noexcept { return *this; }
  virtual ~kcPersistent() = default;

  // Stores or loads this object's version byte and fields.
  virtual void dispatchSerialize(kcArchive& ar) = 0;
  // The name this class is registered under (its C++ name).
  [[nodiscard]] virtual const char* className() const = 0;

  // Visited marks: an object remembers, per archive pass, which marks it has
  // been given, so base and derived dispatches each run at most once.
  [[nodiscard]] bool haveVisited(const kcArchive& ar, unsigned mark) const noexcept;
  void setVisited(const kcArchive& ar, unsigned mark) const;

  // Change tracking: while tracking is on, mutating_() marks the object changed.
  void track(bool on) noexcept { tracking_ = on; }
  [[nodiscard]] bool isTracking() const noexcept { return tracking_; }
  [[nodiscard]] bool changed() const noexcept { return changed_; }
  void clearChanged() noexcept { changed_ = false; }

 protected:
  // Called by setters before they change a field.
  void mutating_() noexcept {
    if (tracking_) changed_ = true;
  }
  // Tests the mark, then transfers the version byte (current when storing,
  // read when loading). False when this pass has already dispatched the mark.
  bool beginDispatch_(kcArchive& ar, unsigned mark, unsigned char& version);
  // The whole dispatch: unless this pass has dispatched mark already, transfers
  // the version byte (current when storing), runs body(version), sets the mark.
  template <class Body>
  void dispatchOnce_(kcArchive& ar, unsigned mark, unsigned char current, Body&& body) {
    unsigned char version = current;
    if (!beginDispatch_(ar, mark, version)) return;
    body(version);
    setVisited(ar, mark);
  }

 private:
  static constexpr std::size_t kMaxMarks = 6;
  mutable std::uint64_t visitPass_ = 0;
  mutable std::array<unsigned, kMaxMarks> visitMarks_{};
  mutable std::uint8_t visitCount_ = 0;
  bool tracking_ = false;
  bool changed_ = false;
};

// Maps class names to factories. Every registered class has a static exemplar
// (an Exemplar object) made at start-up.
class kcPersistenceRegistry {
 public:
  using Factory = kcPersistent* (*)();

  class Exemplar {
   public:
    Exemplar(const char* name, Factory make);
  };

  // Registers a class; a second registration of one name keeps the first.
  static void add(const std::string& name, Factory make);
  // A new default object of the class, or null when the name is unknown.
  [[nodiscard]] static kcPersistent* make(const std::string& name);
  [[nodiscard]] static bool knows(const std::string& name);
  [[nodiscard]] static std::vector<std::string> names();
};

#define KC_DECLARE_PERSISTENT(Class)                    \
 public:                                                \
  static Class* make();                                 \
  [[nodiscard]] const char* className() const override; \
  static const kcPersistenceRegistry::Exemplar sExemplar

#define KC_DEFINE_PERSISTENT_NAMED_(prefix, Class, name)          \
  prefix Class* Class::make() { return new Class(); }             \
  prefix const char* Class::className() const { return name; }    \
  prefix const kcPersistenceRegistry::Exemplar Class::sExemplar { \
    name, []() -> kcPersistent* { return Class::make(); }         \
  }

// In the source file of a class.
#define KC_DEFINE_PERSISTENT(Class) KC_DEFINE_PERSISTENT_NAMED_(, Class, #Class)
// For one instance of a class template: KC_DEFINE_PERSISTENT_TEMPLATE(kcBox<kcCircle>).
#define KC_DEFINE_PERSISTENT_TEMPLATE(Class) KC_DEFINE_PERSISTENT_NAMED_(template <>, Class, #Class)
