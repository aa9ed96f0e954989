// kcSMDGeometricDescription: the common base of the SMD geometric description
// (vertex, poly and model). It gives them a name, a shared archive prefix and
// the drawing entry points: as an outline on a tablet, or as a synthetic
// grey-level image in an 8-bit pel buffer.
//
// Archive form, written first by every derived class: an unsigned version
// byte (0), then the name as a wide string. Another version is an
// UnknownVersion naming this class, line 0.
#pragma once

#include <string>

#include "foundation/handle.h"
#include "foundation/pelbuffer.h"
#include "foundation/persistent.h"
#include "foundation/xform.h"

class kcUITablet;

class kcSMDGeometricDescription : public virtual kcPersistent, public virtual kcRepBase {
 public:
  ~kcSMDGeometricDescription() override;

  [[nodiscard]] const std::wstring& name() const noexcept { return name_; }

  // Draws the outline, mapped by xform, on the tablet.
  virtual void drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const = 0;
  // Draws the filled shape, mapped by xform from client to the buffer's client
  // space, into the buffer.
  virtual void drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const = 0;
  // The same through a shared transform, taken in its affine form; an empty
  // handle throws kcBadPointer before anything is drawn.
  virtual void drawSynthetic(const kcPtrHandle_const<kc2XformBase>& xform,
                             kcPelBuffer<unsigned char>& pelBuffer) const;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  kcSMDGeometricDescription() = default;
  explicit kcSMDGeometricDescription(std::wstring name) : name_(std::move(name)) {}
  kcSMDGeometricDescription(const kcSMDGeometricDescription&) = default;
  kcSMDGeometricDescription& operator=(const kcSMDGeometricDescription&) = default;

  // Creators (the poly factories, say) name their descriptions.
  void name(std::wstring name);
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  std::wstring name_;
};
