// A tour of the archive: builds a few values, stores them in a file, loads
// them back and prints what came back. Exits 1 when anything differs.
//   archive_tour [archive file]
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "foundation/rigid.h"
#include "foundation/xform.h"

namespace {

// UTF-8 for printing a wide string on a narrow stream.
std::string toUtf8(const std::wstring& text) {
  std::string out;
  for (wchar_t c : text) {
    auto u = static_cast<std::uint32_t>(c);
    if (u < 0x80) {
      out += static_cast<char>(u);
    } else if (u < 0x800) {
      out += static_cast<char>(0xC0 | (u >> 6));
      out += static_cast<char>(0x80 | (u & 0x3F));
    } else if (u < 0x10000) {
      out += static_cast<char>(0xE0 | (u >> 12));
      out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (u & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (u >> 18));
      out += static_cast<char>(0x80 | ((u >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (u & 0x3F));
    }
  }
  return out;
}

std::string show(const std::vector<double>& values) {
  std::ostringstream out;
  out << '[';
  for (std::size_t i = 0; i < values.size(); ++i) out << (i ? ", " : "") << values[i];
  out << ']';
  return out.str();
}

std::string show(const kcVector<2>& v) {
  std::ostringstream out;
  out << '(' << v.x() << ", " << v.y() << ')';
  return out.str();
}

std::string show(const kcXform<2>& x) {
  std::ostringstream out;
  const kcMatrix<2>& m = x.matrix();
  out << "[[" << m.element(0, 0) << ", " << m.element(0, 1) << "], [" << m.element(1, 0) << ", "
      << m.element(1, 1) << "]] + " << show(x.trans());
  return out.str();
}

std::string show(const kc2Rigid& r) {
  std::ostringstream out;
  out << "rotate " << kcDegree(r.angle()).toDouble() << " deg, then move by " << show(r.trans());
  return out.str();
}

std::string show(const kcException& e) {
  std::ostringstream out;
  out << e.className() << " 0x" << std::hex << e.errorNumber() << ": \"" << e.what() << '"';
  return out.str();
}

int failures = 0;

// Prints one reloaded value and whether it equals what was stored.
void report(const char* what, const std::string& shown, bool same) {
  std::printf("  %-14s %s%s\n", what, shown.c_str(), same ? "" : "   <-- differs from what was stored");
  if (!same) ++failures;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string path = argc > 1 ? argv[1] : DISPC_DEMO_ARCHIVE;
  std::printf("dispc %s\n", kfDispcVersion());

  // --- the values ---
  std::string camera = "camera 2, board 17";
  std::wstring label = L"Lötstelle ✓ 45°";
  std::vector<double> samples{0.5, 1.25, -3.0, 1e-9, 6.02214076e23};
  kcExceptionWithString error(L"lens cap still on");
  kcVector<2> point(12.5, -4.0);
  kcXform<2> xform(kcMatrix<2>::rotation(kcRadian(kcDegree(30.0))), kcVector<2>(100.0, 50.0));
  kc2Rigid placement(kcRadian(kcDegree(-90.0)), kcVector<2>(7.0, 3.0));
  // One transform held twice: the archive stores it once and the second
  // handle as a reference to the first.
  kcPtrHandle<kc2XformBase> view(new kc2XformLinear(kcXform<2>::scale(2.0, 2.0)));
  kcPtrHandle<kc2XformBase> sameView = view;

  // --- store ---
  try {
    kcFileArchive out(path, kcArchive::Mode::store);
    out || camera || label || samples || point || xform || placement || view || sameView;
    // An object of any persistent class, stored with its class name.
    kcPersistent* object = &error;
    out.transferObject(object);
    out.flush();
  } catch (const kcException& e) {
    std::fprintf(stderr, "storing %s failed: %s\n", path.c_str(), e.what());
    return 1;
  }
  std::printf("stored to %s\n", path.c_str());

  // --- load ---
  std::string cameraBack;
  std::wstring labelBack;
  std::vector<double> samplesBack;
  kcVector<2> pointBack;
  kcXform<2> xformBack;
  kc2Rigid placementBack;
  kcPtrHandle<kc2XformBase> viewBack, sameViewBack;
  std::unique_ptr<kcPersistent> objectBack;
  try {
    kcFileArchive in(path, kcArchive::Mode::load);
    in || cameraBack || labelBack || samplesBack || pointBack || xformBack || placementBack || viewBack ||
        sameViewBack;
    kcPersistent* object = nullptr;
    in.transferObject(object);
    objectBack.reset(object);
    if (!in.atEnd()) {
      std::fprintf(stderr, "loading %s left bytes unread\n", path.c_str());
      return 1;
    }
  } catch (const kcException& e) {
    std::fprintf(stderr, "loading %s failed: %s\n", path.c_str(), e.what());
    return 1;
  }

  // --- what came back ---
  std::printf("loaded back:\n");
  report("string", '"' + cameraBack + '"', cameraBack == camera);
  report("wide string", '"' + toUtf8(labelBack) + '"', labelBack == label);
  report("doubles", show(samplesBack), samplesBack == samples);
  report("vector", show(pointBack), pointBack == point);
  report("transform", show(xformBack), xformBack == xform);
  report("placement", show(placementBack), placementBack == placement);
  report("shared handle",
         viewBack
             ? show(viewBack->linearXform()) + (viewBack == sameViewBack ? ", held twice, one object" : "")
             : "null",
         viewBack && viewBack == sameViewBack && viewBack->linearXform() == view->linearXform());
  const auto* errorBack = dynamic_cast<const kcExceptionWithString*>(objectBack.get());
  report("exception", errorBack ? show(*errorBack) : "not an exception",
         errorBack && errorBack->text() == error.text());

  if (failures) {
    std::printf("%d value(s) differ\n", failures);
    return 1;
  }
  std::printf("all values came back equal\n");
  return 0;
}
