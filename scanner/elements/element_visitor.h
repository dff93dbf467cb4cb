// What the children of a list of elements are shown to, one after the other. Implemented by whoever reads the list;
// called on that thread.
#pragma once

#include <ebml/EbmlMaster.h>

namespace tarvex {

class ElementVisitor {
 public:
  /// True: the children of `master` are shown one by one, and then Leave is called, instead of Show with all of it.
  virtual bool Enter(const libebml::EbmlMaster& /*master*/) { return false; }
  /// Behind the last child of the one that was entered last. False: shown enough.
  virtual bool Leave() { return true; }
  /// `element` with all below it, which stays during the call only. False: shown enough.
  virtual bool Show(libebml::EbmlElement& element) = 0;
  /// One is not shown, since it would take more memory than it may.
  virtual void LeaveOut() {}

 protected:
  ElementVisitor() = default;
  ElementVisitor(const ElementVisitor&) = default;
  ElementVisitor& operator=(const ElementVisitor&) = default;
  ~ElementVisitor() = default;  // never owned through this interface
};

}  // namespace tarvex
