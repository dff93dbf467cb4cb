// Plays a file through GStreamer's matroskademux into sinks that take everything, with a queue and so a
// thread for every stream, and prints what that took, as bench_play does: one JSON object. The time counts
// from setting the pipeline going to its end; loading the library and its plugins is not in it.
#include <gst/gst.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

struct Unref {
  void operator()(GstElement* element) const { gst_object_unref(element); }
  void operator()(GstBus* bus) const { gst_object_unref(bus); }
  void operator()(GstPad* pad) const { gst_object_unref(pad); }
  void operator()(GstMessage* message) const { gst_message_unref(message); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

// The sinks belong to the pipeline.
struct Pipeline {
  Owned<GstElement> bin;
  std::vector<GstElement*> sinks;
};

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

GstElement* NewSink() {
  GstElement* sink = gst_element_factory_make("fakesink", nullptr);
  g_object_set(sink, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
  return sink;
}

void OnPad(GstElement* /*demux*/, GstPad* pad, gpointer data) {
  auto& pipeline = *static_cast<Pipeline*>(data);
  GstElement* queue = gst_element_factory_make("queue", nullptr);
  GstElement* sink = NewSink();
  gst_bin_add_many(GST_BIN(pipeline.bin.get()), queue, sink, nullptr);
  gst_element_link(queue, sink);
  gst_element_sync_state_with_parent(sink);
  gst_element_sync_state_with_parent(queue);
  const Owned<GstPad> input(gst_element_get_static_pad(queue, "sink"));
  gst_pad_link(pad, input.get());
  pipeline.sinks.push_back(sink);
}

void Build(Pipeline& pipeline, const char* path) {
  pipeline.bin.reset(gst_pipeline_new(nullptr));
  GstElement* source = gst_element_factory_make("filesrc", nullptr);
  GstElement* demux = gst_element_factory_make("matroskademux", nullptr);
  g_object_set(source, "location", path, nullptr);
  gst_bin_add_many(GST_BIN(pipeline.bin.get()), source, demux, nullptr);
  gst_element_link(source, demux);
  g_signal_connect(demux, "pad-added", G_CALLBACK(OnPad), &pipeline);
}

bool PlayToEnd(const Pipeline& pipeline) {
  const Owned<GstBus> bus(gst_element_get_bus(pipeline.bin.get()));
  gst_element_set_state(pipeline.bin.get(), GST_STATE_PLAYING);
  const Owned<GstMessage> message(gst_bus_timed_pop_filtered(
      bus.get(), GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
  return GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS;
}

std::uint64_t Rendered(GstElement* sink) {
  GstStructure* stats = nullptr;
  guint64 rendered = 0;
  g_object_get(sink, "stats", &stats, nullptr);
  if (stats == nullptr) return 0;
  gst_structure_get_uint64(stats, "rendered", &rendered);
  gst_structure_free(stats);
  return rendered;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: gst_play FILE\n");
    return 2;
  }
  gst_init(nullptr, nullptr);
  Pipeline pipeline;
  Build(pipeline, argv[1]);
  rusage before{};
  rusage after{};
  getrusage(RUSAGE_SELF, &before);
  const auto start = std::chrono::steady_clock::now();
  const bool ended = PlayToEnd(pipeline);
  const double wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  getrusage(RUSAGE_SELF, &after);
  std::uint64_t samples = 0;
  for (GstElement* sink : pipeline.sinks) samples += Rendered(sink);
  gst_element_set_state(pipeline.bin.get(), GST_STATE_NULL);
  if (!ended) {
    std::fprintf(stderr, "gst_play: cannot play %s\n", argv[1]);
    return 1;
  }
  std::printf(R"({"wall_ms":%.3f,"user_ms":%.3f,"system_ms":%.3f,"peak_bytes":%ld,"samples":%ju})"
              "\n",
              wall, Milliseconds(after.ru_utime) - Milliseconds(before.ru_utime),
              Milliseconds(after.ru_stime) - Milliseconds(before.ru_stime), after.ru_maxrss * 1024,
              static_cast<std::uintmax_t>(samples));
  return 0;
}
