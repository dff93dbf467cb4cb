// Gets the children of a list of elements, one after the other. Implemented by whoever reads the list; called on that
// thread.
#pragma once

#include <ebml/EbmlMaster.h>

namespace tarvex {

class ElementVisitor {
 public:
  /// True: instead of Show with all of `master`, its children are shown one by one, and then Leave is called.
  virtual bool Enter(const libebml::EbmlMaster& /*master*/) { return false; }
  /// After the last child of the element that was entered last. False: show no more.
  virtual bool Leave() { return true; }
  /// `element` with all below it, valid during the call only. False: show no more.
  virtual bool Show(libebml::EbmlElement& element) = 0;
  /// Other bytes are about to take the place of those that blocks were shown in. False: show no more.
  virtual bool BeforeReading() { return true; }
  /// An element is not shown, since it would take more memory than it may.
  virtual void LeaveOut() {}

 protected:
  ElementVisitor() = default;
  ElementVisitor(const ElementVisitor&) = default;
  ElementVisitor& operator=(const ElementVisitor&) = default;
  ~ElementVisitor() = default;  // never owned through this interface
};

}  // namespace tarvex
