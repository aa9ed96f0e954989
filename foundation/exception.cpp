#include "foundation/exception.h"

#include <ios>
#include <sstream>

#include "foundation/archive.h"

// --- kcException ---

void kcException::message_(std::wostream& out) const { out << L"error 0x" << std::hex << errorNumber(); }

std::wstring kcException::message() const {
  std::wostringstream out;
  message_(out);
  return out.str();
}

const char* kcException::what() const noexcept {
  try {
    what_.clear();
    for (wchar_t c : message()) {
      auto u = static_cast<std::uint32_t>(c);
      if (u < 0x80) {
        what_ += static_cast<char>(u);
      } else if (u < 0x800) {
        what_ += static_cast<char>(0xC0 | (u >> 6));
        what_ += static_cast<char>(0x80 | (u & 0x3F));
      } else if (u < 0x10000) {
        what_ += static_cast<char>(0xE0 | (u >> 12));
        what_ += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
        what_ += static_cast<char>(0x80 | (u & 0x3F));
      } else {
        what_ += static_cast<char>(0xF0 | (u >> 18));
        what_ += static_cast<char>(0x80 | ((u >> 12) & 0x3F));
        what_ += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
        what_ += static_cast<char>(0x80 | (u & 0x3F));
      }
    }
    return what_.c_str();
  } catch (...) {
    return "kcException";
  }
}

void kcException::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

// The base carries no fields; its version is that of the class dispatching.
void kcException::serialize_(kcArchive&, unsigned char) {}

// --- kcExceptionWithString ---

KC_DEFINE_EXCEPTION(kcExceptionWithString, 0x10000002, kcExceptionWithString);

void kcExceptionWithString::message_(std::wostream& out) const { out << text_; }

void kcExceptionWithString::serialize_(kcArchive& ar, unsigned char version) {
  kcException::serialize_(ar, version);
  ar || text_;
}

// --- foundation errors ---

KC_DEFINE_EXCEPTION(kcBadPointer, 0x10000001, kcException);
void kcBadPointer::message_(std::wostream& out) const { out << L"null pointer dereferenced"; }

void kfThrowBadPointer() { throw kcBadPointer(); }

KC_DEFINE_EXCEPTION(kcMathError::Singular, 0x10000101, kcException);
void kcMathError::Singular::message_(std::wostream& out) const { out << L"singular matrix"; }

#define KC_SHAPES_ERROR_(Name, number, text)                     \
  KC_DEFINE_EXCEPTION(kcShapesError::Name, number, kcException); \
  void kcShapesError::Name::message_(std::wostream& out) const { out << text; }
KC_SHAPES_ERROR_(BadGeom, 0x10000201, L"bad geometry")
KC_SHAPES_ERROR_(BadRadius, 0x10000202, L"bad radius")
KC_SHAPES_ERROR_(BadCoef, 0x10000203, L"bad coefficient")
KC_SHAPES_ERROR_(DegenerateShape, 0x10000204, L"degenerate shape")
KC_SHAPES_ERROR_(EmptyShape, 0x10000205, L"empty shape")
KC_SHAPES_ERROR_(NotOpenContour, 0x10000206, L"shape is not an open contour")
KC_SHAPES_ERROR_(NotRegion, 0x10000207, L"shape is not a region")
KC_SHAPES_ERROR_(NoTangent, 0x10000208, L"shape has no tangent there")
KC_SHAPES_ERROR_(BadParams, 0x10000209, L"bad parameters")
#undef KC_SHAPES_ERROR_

KC_DEFINE_EXCEPTION(kcFoundationError::LibraryFailure, 0x10000401, kcFoundationError::LibraryFailure);

void kcFoundationError::LibraryFailure::message_(std::wostream& out) const {
  out << L"library call failed with code " << code_;
}

void kcFoundationError::LibraryFailure::serialize_(kcArchive& ar, unsigned char version) {
  kcException::serialize_(ar, version);
  ar || code_;
}

void kfThrowExceptionOnFailure(long code) {
  if (code < 0) throw kcFoundationError::LibraryFailure(code);
}
