// From an interface type to its identifier, the same way in both builds. An interface of our own, or
// one whose header carries no identifier, gets a specialisation of IidOf beside its declaration.
#pragma once

namespace tarvex {

#ifdef _WIN32

/// The identifier of interface I. Specialise for interfaces declared in this code base.
template <class I>
inline const IID& IidOf() {
  return __uuidof(I);
}

// These two are declared by the cross toolchain without an attached identifier.
template <>
inline const IID& IidOf<IAMStreamSelect>() {
  return IID_IAMStreamSelect;
}
template <>
inline const IID& IidOf<IMediaEvent>() {
  return IID_IMediaEvent;
}

#else

/// The identifier of interface I. Specialise for interfaces declared in this code base.
template <class I>
const IID& IidOf() = delete;

template <>
inline const IID& IidOf<IUnknown>() {
  return IID_IUnknown;
}
template <>
inline const IID& IidOf<IClassFactory>() {
  return IID_IClassFactory;
}
template <>
inline const IID& IidOf<IDispatch>() {
  return IID_IDispatch;
}
template <>
inline const IID& IidOf<IPersist>() {
  return IID_IPersist;
}
template <>
inline const IID& IidOf<IPersistStream>() {
  return IID_IPersistStream;
}
template <>
inline const IID& IidOf<ISequentialStream>() {
  return IID_ISequentialStream;
}
template <>
inline const IID& IidOf<IStream>() {
  return IID_IStream;
}
template <>
inline const IID& IidOf<ISpecifyPropertyPages>() {
  return IID_ISpecifyPropertyPages;
}
template <>
inline const IID& IidOf<IMediaFilter>() {
  return IID_IMediaFilter;
}
template <>
inline const IID& IidOf<IBaseFilter>() {
  return IID_IBaseFilter;
}
template <>
inline const IID& IidOf<IPin>() {
  return IID_IPin;
}
template <>
inline const IID& IidOf<IEnumPins>() {
  return IID_IEnumPins;
}
template <>
inline const IID& IidOf<IEnumMediaTypes>() {
  return IID_IEnumMediaTypes;
}
template <>
inline const IID& IidOf<IEnumFilters>() {
  return IID_IEnumFilters;
}
template <>
inline const IID& IidOf<IMemInputPin>() {
  return IID_IMemInputPin;
}
template <>
inline const IID& IidOf<IMemAllocator>() {
  return IID_IMemAllocator;
}
template <>
inline const IID& IidOf<IMediaSample>() {
  return IID_IMediaSample;
}
template <>
inline const IID& IidOf<IMediaSample2>() {
  return IID_IMediaSample2;
}
template <>
inline const IID& IidOf<IAsyncReader>() {
  return IID_IAsyncReader;
}
template <>
inline const IID& IidOf<IFilterGraph>() {
  return IID_IFilterGraph;
}
template <>
inline const IID& IidOf<IGraphBuilder>() {
  return IID_IGraphBuilder;
}
template <>
inline const IID& IidOf<IMediaControl>() {
  return IID_IMediaControl;
}
template <>
inline const IID& IidOf<IMediaEvent>() {
  return IID_IMediaEvent;
}
template <>
inline const IID& IidOf<IMediaEventSink>() {
  return IID_IMediaEventSink;
}
template <>
inline const IID& IidOf<IMediaSeeking>() {
  return IID_IMediaSeeking;
}
template <>
inline const IID& IidOf<IReferenceClock>() {
  return IID_IReferenceClock;
}
template <>
inline const IID& IidOf<IAMStreamSelect>() {
  return IID_IAMStreamSelect;
}
template <>
inline const IID& IidOf<IQualityControl>() {
  return IID_IQualityControl;
}
template <>
inline const IID& IidOf<IAMovieSetup>() {
  return IID_IAMovieSetup;
}
template <>
inline const IID& IidOf<IFileSourceFilter>() {
  return IID_IFileSourceFilter;
}

#endif

}  // namespace tarvex
