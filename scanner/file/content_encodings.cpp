#include "scanner/file/content_encodings.h"

#include "framework/log.h"
#include "scanner/elements/element_walker.h"

namespace tarvex {

namespace {

void StoreAlgorithm(const libmatroska::KaxContentCompAlgo& algorithm, CHeap& track) {
  track.Store("KaxContentCompAlgo", algorithm);
  LogFormat("\t\t\tKaxContentCompAlgo %d", static_cast<int>(algorithm.GetValue()));
}

void ReadCompression(const libmatroska::KaxContentCompression& compression, CHeap& track) {
  LogText("\t\tKaxContentCompression");
  // The format's default, which is zlib.
  if (compression.ListSize() == 0) StoreAlgorithm(libmatroska::KaxContentCompAlgo(), track);
  for (const libebml::EbmlElement* child : compression) {
    if (const auto* algorithm = ElementAs<libmatroska::KaxContentCompAlgo>(child)) {
      StoreAlgorithm(*algorithm, track);
    } else if (ElementAs<libmatroska::KaxContentCompSettings>(child) != nullptr) {
      LogText("\t\t\tKaxContentCompSettings");
      track.Store("KaxContentCompSettings", *child);
    } else {
      LogText("Unsupported Element in KaxContentCompression");
    }
  }
}

void ReadEncoding(libmatroska::KaxContentEncoding& encoding, CHeap& track) {
  for (libebml::EbmlElement* child : encoding) {
    if (const auto* compression = ElementAs<libmatroska::KaxContentCompression>(child)) {
      ReadCompression(*compression, track);
    } else {
      LogText("Unsupported Element in KaxContentEncoding");
    }
  }
}

}  // namespace

void ReadContentEncodings(libmatroska::KaxContentEncodings& encodings, CHeap& track) {
  LogText("\tKaxContentEncodings");
  for (libebml::EbmlElement* child : encodings) {
    if (auto* encoding = ElementAs<libmatroska::KaxContentEncoding>(child)) ReadEncoding(*encoding, track);
  }
}

}  // namespace tarvex
