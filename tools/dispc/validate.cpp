// dispc validate: every outline of an SMD file validated as a fresh edit
// would validate it, and its segment lengths checked against their
// tolerances under a scale.
//
// The library validates each poly as it loads it; a file with one that does
// not validate is refused, and the message names the poly and the vertex
// where building it afresh is refused. The outlines of a file that loads are
// built again vertex by vertex all the same, as a fresh edit would.
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "dispc/smd/polyprivate.h"
#include "foundation/bytes.h"
#include "tools/dispc/command_p.h"

namespace dispctool {

namespace {

// "1 poly", "2 polys".
std::string counted(long n, const std::string& noun) {
  return std::to_string(n) + " " + noun + (n == 1 ? "" : "s");
}

std::string limitText(double v, const char* none) { return v < 0.0 ? none : rounded(v); }

// One line per segment out of tolerance: where it runs, its length under
// the scale and what its tolerance allows.
void listSegments(const kcSMDGDPoly& poly, const std::vector<long>& segments, double scale,
                  std::ostream& out) {
  for (long s : segments) {
    const kcSMDDimension d = poly.segmentDimension(s);
    const int from = kcSMDGDPolyPrivate::previousVertexIndex_(poly, static_cast<int>(s));
    // A similarity scales every length, an arc's too, by its factor.
    out << "  segment " << s << " (vertex " << from << " to " << s << "): length "
        << rounded(scale * d.nominal()) << ", allowed " << limitText(d.min(), "any") << " to "
        << limitText(d.max(), "any") << " (nominal " << rounded(d.nominal()) << ")\n";
  }
}

}  // namespace

int runValidate(const Invocation& in) {
  const double scale = in.positive("scale").value_or(1.0);
  const std::string& path = in.file();
  const kcDispcFileContent content = loadFile(path);
  requireSmd(in, content);
  const auto* model = std::get_if<kcSMDGDModel>(&content);
  const std::vector<kcSMDGDPoly> polys = model ? model->polys() : std::vector{std::get<kcSMDGDPoly>(content)};

  // Held back until it is known whether there is a finding to report.
  std::ostringstream report;
  long invalid = 0, outOfTolerance = 0;
  for (std::size_t i = 0; i < polys.size(); ++i) {
    const kcSMDGDPoly& poly = polys[i];
    report << "poly " << (model ? std::to_string(i) + " " : "") << quoted(poly.name()) << ": ";
    const std::wstring refusal = kcSMDGDPolyPrivate::rebuildRefusal(poly);
    if (!refusal.empty()) {
      ++invalid;
      report << "invalid " << kfToUtf8(refusal) << '\n';
      continue;
    }
    const std::vector<long> segments =
        poly.segmentsOutOfTolerance(kcXform<2>::scale(scale, scale), kcXform<2>());
    report << "valid";
    if (!segments.empty())
      report << ", " << counted(static_cast<long>(segments.size()), "segment")
             << " out of tolerance under scale " << rounded(scale);
    report << '\n';
    listSegments(poly, segments, scale, report);
    outOfTolerance += static_cast<long>(segments.size());
  }

  if (invalid == 0 && outOfTolerance == 0) {
    std::cout << report.str() << counted(static_cast<long>(polys.size()), "poly")
              << " valid, every segment within tolerance under scale " << rounded(scale) << '\n';
    return kExitOk;
  }
  std::cout << report.str() << std::flush;
  std::string why;
  if (invalid) why = counted(invalid, "poly") + " invalid";
  if (outOfTolerance)
    why += (why.empty() ? "" : ", ") + counted(outOfTolerance, "segment") + " out of tolerance under scale " +
           rounded(scale);
  throw Failure(path + ": validation failed: " + why);
}

}  // namespace dispctool
