// What the commands share: loading a file with its errors in the tool's
// words, and the way numbers, boxes and colours are written.
#include <charconv>
#include <cstdio>
#include <new>

#include "dispc/uierror.h"
#include "foundation/archive.h"
#include "foundation/bytes.h"
#include "tools/dispc/command_p.h"

namespace dispctool {

// --- loading ---

kcDispcFileContent loadFile(const std::string& path) {
  try {
    return kfLoad(path);
  } catch (...) {
    throw Failure(describeLoadError(path));
  }
}

std::string describeLoadError(const std::string& path) {
  try {
    throw;
  } catch (const kcArchive::FileError& e) {
    // Its text names the path already.
    return e.what();
  } catch (const kcArchive::UnknownVersion& e) {
    return path + ": " + e.what();
  } catch (const kcUIError::InvalidUISketch& e) {
    // The sketch error has no text of its own, only its number.
    return path + ": damaged file: malformed sketch records (" + e.what() + ")";
  } catch (const kcException& e) {
    // Anything else a load refuses (kcArchive::Corrupt above all) is in the bytes.
    return path + ": damaged file: " + e.what();
  } catch (const std::bad_alloc&) {
    return path + ": out of memory";
  }
}

void requireSmd(const Invocation& in, const kcDispcFileContent& content) {
  const keDispcFileKind kind = kfKind(content);
  if (kind != keDispcFileKind::poly && kind != keDispcFileKind::model)
    throw UsageError(in.file() + " holds a " + kfKindName(kind) + "; " + in.command().name +
                     " takes a poly or a model");
}

// --- boxes ---

namespace {

kcRect listBox(const kcGraphicList& list) {
  kcRect box;
  for (const kcGraphicPtr& g : list.items())
    if (g) box.enclose(g->encloseRect());
  return box;
}

kcRect sketchBox(const kcUISketch& sketch, kcUITablet::Layers layer) {
  kcUITablet identity;
  const kcUIRect pels = identity.encloseRect(sketch, kcPoint(0, 0), layer);
  if (pels.isNull()) return {};
  return kcRect(kcVector<2>(static_cast<double>(pels.left()), static_cast<double>(pels.top())),
                kcVector<2>(static_cast<double>(pels.width()), static_cast<double>(pels.height())));
}

}  // namespace

kcRect drawingBox(const kcDispcFileContent& content, kcUITablet::Layers layer) {
  switch (kfKind(content)) {
    case keDispcFileKind::sketch:
      return sketchBox(std::get<kcUISketch>(content), layer);
    case keDispcFileKind::graphicList:
      return listBox(std::get<kcGraphicList>(content));
    case keDispcFileKind::poly:
      return std::get<kcSMDGDPoly>(content).boundingBox(kcXform<2>());
    case keDispcFileKind::model:
      return std::get<kcSMDGDModel>(content).boundingBox(kcXform<2>());
  }
  return {};
}

// --- text ---

std::string exact(double v) {
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, v).ptr;
  return std::string(buffer, end);
}

std::string rounded(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.6g", v);
  // -0 reads as a fault in a listing; it is the same number.
  return std::string(buffer) == "-0" ? "0" : buffer;
}

std::string boxText(const kcRect& box) {
  if (box.isEmpty()) return "empty";
  return "x " + rounded(box.xMin()) + " .. " + rounded(box.xMax()) + ", y " + rounded(box.yMin()) + " .. " +
         rounded(box.yMax());
}

std::string quoted(const std::wstring& s) {
  std::string out = "\"";
  for (const wchar_t w : s) {
    if (w == L'"' || w == L'\\') {
      out += '\\';
      out += static_cast<char>(w);
    } else if (w >= 0 && w < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(w));
      out += escape;
    } else {
      out += kfToUtf8(std::wstring_view(&w, 1));
    }
  }
  return out + "\"";
}

}  // namespace dispctool
