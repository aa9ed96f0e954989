// Exceptions: every error of the library is a persistent kcException with a
// fixed 32-bit error number, so that it can cross an archive and be rethrown.
#pragma once

#include <exception>
#include <iosfwd>
#include <string>

#include "foundation/persistent.h"

class kcException : public std::exception, public virtual kcPersistent {
 public:
  kcException() = default;
  kcException(const kcException& other) : kcPersistent(other), std::exception(other) {}
  kcException& operator=(const kcException&) = default;
  ~kcException() override = default;

  [[nodiscard]] virtual long errorNumber() const = 0;
  // Writes the human-readable text.
  virtual void message_(std::wostream& out) const;
  [[nodiscard]] std::wstring message() const;
  // The message as UTF-8.
  [[nodiscard]] const char* what() const noexcept override;
  // Deletes this heap object (one an archive made, say) and throws a copy of
  // the same class by value.
  [[noreturn]] virtual void suicideAndRethrow() = 0;
  // Throws a copy of this exception, of its own class.
  [[noreturn]] virtual void rethrow() const = 0;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  mutable std::string what_;
};

// Declares the members every concrete exception class repeats.
#define KC_DECLARE_EXCEPTION(Class)                \
  KC_DECLARE_PERSISTENT(Class);                    \
  [[nodiscard]] long errorNumber() const override; \
  [[noreturn]] void suicideAndRethrow() override;  \
  [[noreturn]] void rethrow() const override;      \
  void dispatchSerialize(kcArchive& ar) override

// Defines them for an exception whose only state is its class. The version
// byte must be 0 (an UnknownVersion naming the class otherwise); Body is the
// class whose serialize_ transfers the fields (the base for a stateless error).
#define KC_DEFINE_EXCEPTION(Class, number, Body)                    \
  KC_DEFINE_PERSISTENT(Class);                                      \
  long Class::errorNumber() const { return number; }                \
  void Class::suicideAndRethrow() {                                 \
    Class copy(*this);                                              \
    delete this;                                                    \
    throw copy;                                                     \
  }                                                                 \
  void Class::rethrow() const { throw *this; }                      \
  void Class::dispatchSerialize(kcArchive& ar) {                    \
    dispatchOnce_(ar, this, 0, [&](unsigned char version) {         \
      if (version != 0) throw kcArchive::UnknownVersion(#Class, 0); \
      Body::serialize_(ar, version);                                \
    });                                                             \
  }

// An exception carrying a text given by its thrower.
class kcExceptionWithString : public kcException {
 public:
  KC_DECLARE_EXCEPTION(kcExceptionWithString);

  kcExceptionWithString() = default;
  explicit kcExceptionWithString(std::wstring text) : text_(std::move(text)) {}

  [[nodiscard]] const std::wstring& text() const noexcept { return text_; }
  void message_(std::wostream& out) const override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  std::wstring text_;
};

// A null handle or pointer was dereferenced.
class kcBadPointer : public kcException {
 public:
  KC_DECLARE_EXCEPTION(kcBadPointer);
  void message_(std::wostream& out) const override;
};

struct kcMathError {
  // A matrix with a zero determinant was inverted.
  class Singular : public kcException {
   public:
    KC_DECLARE_EXCEPTION(Singular);
    void message_(std::wostream& out) const override;
  };
};

struct kcShapesError {
#define KC_SHAPES_ERROR_(Name)                        \
  class Name : public kcException {                   \
   public:                                            \
    KC_DECLARE_EXCEPTION(Name);                       \
    void message_(std::wostream& out) const override; \
  }
  KC_SHAPES_ERROR_(BadGeom);
  KC_SHAPES_ERROR_(BadRadius);
  KC_SHAPES_ERROR_(BadCoef);
  KC_SHAPES_ERROR_(DegenerateShape);
  KC_SHAPES_ERROR_(EmptyShape);
  KC_SHAPES_ERROR_(NotOpenContour);
  KC_SHAPES_ERROR_(NotRegion);
  KC_SHAPES_ERROR_(NoTangent);
  KC_SHAPES_ERROR_(BadParams);
#undef KC_SHAPES_ERROR_
};

struct kcFoundationError {
  // A companion library returned a negative code.
  class LibraryFailure : public kcException {
   public:
    KC_DECLARE_EXCEPTION(LibraryFailure);
    LibraryFailure() = default;
    explicit LibraryFailure(long code) : code_(code) {}
    [[nodiscard]] long code() const noexcept { return code_; }
    void message_(std::wostream& out) const override;

   protected:
    void serialize_(kcArchive& ar, unsigned char version);

   private:
    long code_ = 0;
  };
};

// Throws kcFoundationError::LibraryFailure for a negative code.
void kfThrowExceptionOnFailure(long code);
