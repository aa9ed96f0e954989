// Persistence: the base of every class that travels through a kcArchive, and
// the registry that recreates such objects from their class names.
//
// A persistent class archives itself with one symmetric routine:
//
//   void kcThing::dispatchSerialize(kcArchive& ar) {
//     dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
//   }
//
// where serialize_ archives the bases first (calling a base's dispatchSerialize
// where the base has a version byte of its own), then the class's own fields.
// Within one transfer of an object each class dispatches at most once, so a
// base reached along two paths is written once; a second transfer of the same
// object (storing it twice) writes it again in full.
//
// A class registers itself with KC_DECLARE_PERSISTENT in the class and
// KC_DEFINE_PERSISTENT in its source file.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
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

  // Visited marks, one per class, valid while this object is being transferred
  // through ar: which of its classes have dispatched so far. Outside a transfer
  // nothing is visited, and setVisited does nothing.
  [[nodiscard]] bool haveVisited(const kcArchive& ar, unsigned mark) const noexcept;
  void setVisited(kcArchive& ar, unsigned mark) const;
  // The mark of class C, made on first use: two classes never share one.
  template <class C>
  [[nodiscard]] static unsigned markOf() noexcept {
    static const unsigned mark = newMark_();
    return mark;
  }

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
  // The whole dispatch of class Self (self is `this` in Self's own
  // dispatchSerialize): unless Self has dispatched in this transfer of the
  // object already, transfers the version byte (current when storing) and runs
  // body(version). A store that throws at the top level takes back what it
  // wrote, so the archive is left as it was. Defined in foundation/archive.h.
  template <class Self, class Body>
  void dispatchOnce_(kcArchive& ar, const Self* self, unsigned char current, Body&& body);

 private:
  static unsigned newMark_() noexcept;

  bool tracking_ = false;
  bool changed_ = false;
};

// Maps class names to factories.
//
// Every persistent class has a static exemplar (its name and factory, fixed at
// compile time) and registers it when its library or program starts. A static
// link drops the object files nobody references, exemplars and all, so each
// library also keeps a list of its exemplars; the registry takes the
// foundation's list on first use, and a library that builds on it hands over
// its own (see kcPersistenceRegistry::Module).
class kcPersistenceRegistry {
 public:
  using Factory = kcPersistent* (*)();

  class Exemplar {
   public:
    constexpr Exemplar(const char* name, Factory make) noexcept : name_(name), make_(make) {}
    [[nodiscard]] constexpr const char* name() const noexcept { return name_; }
    [[nodiscard]] constexpr Factory factory() const noexcept { return make_; }

   private:
    const char* name_;
    Factory make_;
  };

  // Registers one exemplar when a program starts (what KC_DEFINE_PERSISTENT makes).
  class Registrar {
   public:
    explicit Registrar(const Exemplar& exemplar);
  };

  // Hands a library's list of exemplars to the registry. A library defines one
  // in a header its users include, so that using the library links the list.
  class Module {
   public:
    explicit Module(std::span<const Exemplar* const> classes);
  };

  // Registers a class; a second registration of one name keeps the first.
  static void add(const std::string& name, Factory make);
  static void add(std::span<const Exemplar* const> classes);
  // A new default object of the class, or null when the name is unknown.
  [[nodiscard]] static kcPersistent* make(const std::string& name);
  [[nodiscard]] static bool knows(const std::string& name);
  // Every registered name, sorted.
  [[nodiscard]] static std::vector<std::string> names();
};

// The foundation's own persistent classes.
[[nodiscard]] std::span<const kcPersistenceRegistry::Exemplar* const> kfFoundationClasses();

// Class names are spelled as C++ prints them: no spaces but one after each
// comma and those between two words ("kcBox<unsigned char>",
// "kcPair2<kcCircle, kcEllipse2>"), so that a name is the same wherever it is written.
consteval bool kfIsCanonicalClassName(std::string_view name) {
  auto word = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  if (name.empty()) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == ',' && (i + 1 >= name.size() || name[i + 1] != ' ')) return false;
    if (name[i] != ' ') continue;
    const bool afterComma = i > 0 && name[i - 1] == ',';
    const bool betweenWords = i > 0 && i + 1 < name.size() && word(name[i - 1]) && word(name[i + 1]);
    if (!afterComma && !betweenWords) return false;
    if (i + 1 < name.size() && name[i + 1] == ' ') return false;
  }
  return true;
}

// In the class. Takes the class name, template arguments and all.
#define KC_DECLARE_PERSISTENT(...)                      \
 public:                                                \
  static __VA_ARGS__* make();                           \
  [[nodiscard]] const char* className() const override; \
  static const kcPersistenceRegistry::Exemplar sExemplar

#define KC_PERSISTENT_CAT2_(a, b) a##b
#define KC_PERSISTENT_CAT_(a, b) KC_PERSISTENT_CAT2_(a, b)

#define KC_DEFINE_PERSISTENT_NAMED_(prefix, name, ...)                                            \
  static_assert(kfIsCanonicalClassName(name), "spell the class name as C++ prints it: " name);    \
  prefix __VA_ARGS__* __VA_ARGS__::make() { return new __VA_ARGS__(); }                           \
  prefix const char* __VA_ARGS__::className() const { return name; }                              \
  prefix constinit const kcPersistenceRegistry::Exemplar __VA_ARGS__::sExemplar{                  \
      name, []() -> kcPersistent* { return __VA_ARGS__::make(); }};                               \
  namespace {                                                                                     \
  const kcPersistenceRegistry::Registrar KC_PERSISTENT_CAT_(kcRegistrar_,                         \
                                                            __COUNTER__){__VA_ARGS__::sExemplar}; \
  }

// In the source file of a class: KC_DEFINE_PERSISTENT(kcCircle).
#define KC_DEFINE_PERSISTENT(...) KC_DEFINE_PERSISTENT_NAMED_(, #__VA_ARGS__, __VA_ARGS__)
// For one instance of a class template: KC_DEFINE_PERSISTENT_TEMPLATE(kcPair2<kcCircle, kcEllipse2>).
#define KC_DEFINE_PERSISTENT_TEMPLATE(...) KC_DEFINE_PERSISTENT_NAMED_(template <>, #__VA_ARGS__, __VA_ARGS__)
