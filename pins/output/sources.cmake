# Sources of the output pins, relative to pins/.
set(TARVEX_PINS_OUTPUT_SOURCES
  output/annex_b_converter.cpp
  output/matroska_audio_pin.cpp
  output/matroska_output_pin.cpp
  output/matroska_subtitle_pin.cpp
  output/matroska_video_pin.cpp
  output/pending_frames.cpp
  output/pin_seeking.cpp
  output/play_positions.cpp
  output/ring_regions.cpp
  output/sample_buffer.cpp
  output/sample_sender.cpp
  output/seek_arithmetic.cpp
  output/segment_gate.cpp
  output/track_record.cpp)
