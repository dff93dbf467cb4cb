// DirectShow's structures, flags, event and result codes for builds without the system headers: the
// published names, values and layouts. Owned by the platform border; include platform.h instead.
#pragma once

#include "framework/platform/linux/com_interfaces.h"

using REFERENCE_TIME = LONGLONG;

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

struct BITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
};

struct VIDEOINFOHEADER {
  RECT rcSource;
  RECT rcTarget;
  DWORD dwBitRate;
  DWORD dwBitErrorRate;
  REFERENCE_TIME AvgTimePerFrame;
  BITMAPINFOHEADER bmiHeader;
};

struct VIDEOINFOHEADER2 {
  RECT rcSource;
  RECT rcTarget;
  DWORD dwBitRate;
  DWORD dwBitErrorRate;
  REFERENCE_TIME AvgTimePerFrame;
  DWORD dwInterlaceFlags;
  DWORD dwCopyProtectFlags;
  DWORD dwPictAspectRatioX;
  DWORD dwPictAspectRatioY;
  union {
    DWORD dwControlFlags;
    DWORD dwReserved1;
  };
  DWORD dwReserved2;
  BITMAPINFOHEADER bmiHeader;
};

struct MPEG1VIDEOINFO {
  VIDEOINFOHEADER hdr;
  DWORD dwStartTimeCode;
  DWORD cbSequenceHeader;
  BYTE bSequenceHeader[1];
};

struct MPEG2VIDEOINFO {
  VIDEOINFOHEADER2 hdr;
  DWORD dwStartTimeCode;
  DWORD cbSequenceHeader;
  DWORD dwProfile;
  DWORD dwLevel;
  DWORD dwFlags;
  DWORD dwSequenceHeader[1];
};

#pragma pack(push, 1)
struct WAVEFORMATEX {
  WORD wFormatTag;
  WORD nChannels;
  DWORD nSamplesPerSec;
  DWORD nAvgBytesPerSec;
  WORD nBlockAlign;
  WORD wBitsPerSample;
  WORD cbSize;
};
#pragma pack(pop)

inline constexpr WORD WAVE_FORMAT_PCM = 0x0001;
inline constexpr WORD WAVE_FORMAT_IEEE_FLOAT = 0x0003;
inline constexpr WORD WAVE_FORMAT_MPEG = 0x0050;
inline constexpr WORD WAVE_FORMAT_MPEGLAYER3 = 0x0055;

struct AM_MEDIA_TYPE {
  GUID majortype;
  GUID subtype;
  BOOL bFixedSizeSamples;
  BOOL bTemporalCompression;
  ULONG lSampleSize;
  GUID formattype;
  IUnknown* pUnk;
  ULONG cbFormat;
  BYTE* pbFormat;
};

struct ALLOCATOR_PROPERTIES {
  LONG cBuffers;
  LONG cbBuffer;
  LONG cbAlign;
  LONG cbPrefix;
};

enum PIN_DIRECTION { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };

inline constexpr std::size_t MAX_PIN_NAME = 128;
inline constexpr std::size_t MAX_FILTER_NAME = 128;

struct IBaseFilter;
struct IFilterGraph;

struct PIN_INFO {
  IBaseFilter* pFilter;
  PIN_DIRECTION dir;
  WCHAR achName[128];
};

struct FILTER_INFO {
  WCHAR achName[128];
  IFilterGraph* pGraph;
};

enum FILTER_STATE { State_Stopped = 0, State_Paused = 1, State_Running = 2 };
using OAFilterState = LONG;

enum AM_SEEKING_SEEKING_FLAGS {
  AM_SEEKING_NoPositioning = 0x0,
  AM_SEEKING_AbsolutePositioning = 0x1,
  AM_SEEKING_RelativePositioning = 0x2,
  AM_SEEKING_IncrementalPositioning = 0x3,
  AM_SEEKING_PositioningBitsMask = 0x3,
  AM_SEEKING_SeekToKeyFrame = 0x4,
  AM_SEEKING_ReturnTime = 0x8,
  AM_SEEKING_Segment = 0x10,
  AM_SEEKING_NoFlush = 0x20
};

enum AM_SEEKING_SEEKING_CAPABILITIES {
  AM_SEEKING_CanSeekAbsolute = 0x1,
  AM_SEEKING_CanSeekForwards = 0x2,
  AM_SEEKING_CanSeekBackwards = 0x4,
  AM_SEEKING_CanGetCurrentPos = 0x8,
  AM_SEEKING_CanGetStopPos = 0x10,
  AM_SEEKING_CanGetDuration = 0x20,
  AM_SEEKING_CanPlayBackwards = 0x40,
  AM_SEEKING_CanDoSegments = 0x80,
  AM_SEEKING_Source = 0x100
};

enum AM_SAMPLE_PROPERTY_FLAGS {
  AM_SAMPLE_SPLICEPOINT = 0x1,
  AM_SAMPLE_PREROLL = 0x2,
  AM_SAMPLE_DATADISCONTINUITY = 0x4,
  AM_SAMPLE_TYPECHANGED = 0x8,
  AM_SAMPLE_TIMEVALID = 0x10,
  AM_SAMPLE_TIMEDISCONTINUITY = 0x40,
  AM_SAMPLE_FLUSH_ON_PAUSE = 0x80,
  AM_SAMPLE_STOPVALID = 0x100,
  AM_SAMPLE_ENDOFSTREAM = 0x200
};

struct AM_SAMPLE2_PROPERTIES {
  DWORD cbData;
  DWORD dwTypeSpecificFlags;
  DWORD dwSampleFlags;
  LONG lActual;
  REFERENCE_TIME tStart;
  REFERENCE_TIME tStop;
  DWORD dwStreamId;
  AM_MEDIA_TYPE* pMediaType;
  BYTE* pbBuffer;
  LONG cbBuffer;
};

inline constexpr DWORD AM_GBF_PREVFRAMESKIPPED = 1;
inline constexpr DWORD AM_GBF_NOTASYNCPOINT = 2;
inline constexpr DWORD AM_GBF_NOWAIT = 4;

enum AMSTREAMSELECTINFOFLAGS { AMSTREAMSELECTINFO_ENABLED = 0x1, AMSTREAMSELECTINFO_EXCLUSIVE = 0x2 };
enum AMSTREAMSELECTENABLEFLAGS { AMSTREAMSELECTENABLE_ENABLE = 0x1, AMSTREAMSELECTENABLE_ENABLEALL = 0x2 };

enum QualityMessageType { Famine = 0, Flood = 1 };
struct Quality {
  QualityMessageType Type;
  LONG Proportion;
  REFERENCE_TIME Late;
  REFERENCE_TIME TimeStamp;
};

enum Merit {
  MERIT_PREFERRED = 0x800000,
  MERIT_NORMAL = 0x600000,
  MERIT_UNLIKELY = 0x400000,
  MERIT_DO_NOT_USE = 0x200000
};

inline constexpr LONG EC_COMPLETE = 0x01;
inline constexpr LONG EC_USERABORT = 0x02;
inline constexpr LONG EC_ERRORABORT = 0x03;
inline constexpr LONG EC_STREAM_ERROR_STOPPED = 0x06;
inline constexpr LONG EC_STREAM_ERROR_STILLPLAYING = 0x07;
inline constexpr LONG EC_NEED_RESTART = 0x14;
inline constexpr LONG EC_END_OF_SEGMENT = 0x1C;
inline constexpr LONG EC_LENGTH_CHANGED = 0x1E;

inline constexpr HRESULT VFW_S_NO_MORE_ITEMS = 0x00040103;
inline constexpr HRESULT VFW_S_STATE_INTERMEDIATE = 0x00040237;
inline constexpr HRESULT VFW_S_PARTIAL_RENDER = 0x00040242;
inline constexpr HRESULT VFW_S_ESTIMATED = 0x00040260;
inline constexpr HRESULT VFW_S_CANT_CUE = 0x00040268;
inline constexpr HRESULT VFW_S_NO_STOP_TIME = 0x00040270;
inline constexpr HRESULT VFW_E_INVALIDMEDIATYPE = static_cast<HRESULT>(0x80040200);
inline constexpr HRESULT VFW_E_NEED_OWNER = static_cast<HRESULT>(0x80040202);
inline constexpr HRESULT VFW_E_ENUM_OUT_OF_SYNC = static_cast<HRESULT>(0x80040203);
inline constexpr HRESULT VFW_E_ALREADY_CONNECTED = static_cast<HRESULT>(0x80040204);
inline constexpr HRESULT VFW_E_FILTER_ACTIVE = static_cast<HRESULT>(0x80040205);
inline constexpr HRESULT VFW_E_NO_TYPES = static_cast<HRESULT>(0x80040206);
inline constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = static_cast<HRESULT>(0x80040207);
inline constexpr HRESULT VFW_E_INVALID_DIRECTION = static_cast<HRESULT>(0x80040208);
inline constexpr HRESULT VFW_E_NOT_CONNECTED = static_cast<HRESULT>(0x80040209);
inline constexpr HRESULT VFW_E_NO_ALLOCATOR = static_cast<HRESULT>(0x8004020A);
inline constexpr HRESULT VFW_E_RUNTIME_ERROR = static_cast<HRESULT>(0x8004020B);
inline constexpr HRESULT VFW_E_BUFFER_NOTSET = static_cast<HRESULT>(0x8004020C);
inline constexpr HRESULT VFW_E_BUFFER_OVERFLOW = static_cast<HRESULT>(0x8004020D);
inline constexpr HRESULT VFW_E_BADALIGN = static_cast<HRESULT>(0x8004020E);
inline constexpr HRESULT VFW_E_ALREADY_COMMITTED = static_cast<HRESULT>(0x8004020F);
inline constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING = static_cast<HRESULT>(0x80040210);
inline constexpr HRESULT VFW_E_NOT_COMMITTED = static_cast<HRESULT>(0x80040211);
inline constexpr HRESULT VFW_E_SIZENOTSET = static_cast<HRESULT>(0x80040212);
inline constexpr HRESULT VFW_E_NO_CLOCK = static_cast<HRESULT>(0x80040213);
inline constexpr HRESULT VFW_E_NO_SINK = static_cast<HRESULT>(0x80040214);
inline constexpr HRESULT VFW_E_NO_INTERFACE = static_cast<HRESULT>(0x80040215);
inline constexpr HRESULT VFW_E_NOT_FOUND = static_cast<HRESULT>(0x80040216);
inline constexpr HRESULT VFW_E_CANNOT_CONNECT = static_cast<HRESULT>(0x80040217);
inline constexpr HRESULT VFW_E_CANNOT_RENDER = static_cast<HRESULT>(0x80040218);
inline constexpr HRESULT VFW_E_NOT_STOPPED = static_cast<HRESULT>(0x80040224);
inline constexpr HRESULT VFW_E_NOT_PAUSED = static_cast<HRESULT>(0x80040225);
inline constexpr HRESULT VFW_E_NOT_RUNNING = static_cast<HRESULT>(0x80040226);
inline constexpr HRESULT VFW_E_WRONG_STATE = static_cast<HRESULT>(0x80040227);
inline constexpr HRESULT VFW_E_START_TIME_AFTER_END = static_cast<HRESULT>(0x80040228);
inline constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = static_cast<HRESULT>(0x8004022A);
inline constexpr HRESULT VFW_E_SAMPLE_REJECTED = static_cast<HRESULT>(0x8004022B);
inline constexpr HRESULT VFW_E_SAMPLE_REJECTED_EOS = static_cast<HRESULT>(0x8004022C);
inline constexpr HRESULT VFW_E_TIMEOUT = static_cast<HRESULT>(0x8004022E);
inline constexpr HRESULT VFW_E_INVALID_FILE_FORMAT = static_cast<HRESULT>(0x8004022F);
inline constexpr HRESULT VFW_E_ENUM_OUT_OF_RANGE = static_cast<HRESULT>(0x80040230);
inline constexpr HRESULT VFW_E_UNKNOWN_FILE_TYPE = static_cast<HRESULT>(0x80040240);
inline constexpr HRESULT VFW_E_INVALID_FILE_VERSION = static_cast<HRESULT>(0x80040244);
inline constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET = static_cast<HRESULT>(0x80040249);
inline constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET = static_cast<HRESULT>(0x80040251);
inline constexpr HRESULT VFW_E_NO_TIME_FORMAT_SET = static_cast<HRESULT>(0x80040252);
inline constexpr HRESULT VFW_E_NOT_IN_GRAPH = static_cast<HRESULT>(0x8004025F);
inline constexpr HRESULT VFW_E_NO_TIME_FORMAT = static_cast<HRESULT>(0x80040261);
inline constexpr HRESULT VFW_E_UNSUPPORTED_STREAM = static_cast<HRESULT>(0x80040265);
