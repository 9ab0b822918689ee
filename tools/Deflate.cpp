#include "Deflate.h"

#include <limits>
#include <new>

// zlib then takes its input as const.
#define ZLIB_CONST
#include <zlib.h>

namespace ksaml {
namespace {

constexpr int kWithoutHeader = -15;

const Bytef* bytesOf(std::string_view text) { return reinterpret_cast<const Bytef*>(text.data()); }

uInt lengthOf(std::string_view text) {
  if (text.size() > std::numeric_limits<uInt>::max()) throw std::bad_alloc();
  return static_cast<uInt>(text.size());
}

void check(int status) {
  if (status != Z_OK) throw std::bad_alloc();  // the arguments are valid, so zlib is out of memory
}

}  // namespace

std::string deflated(std::string_view text) {
  z_stream stream{};
  check(
      deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kWithoutHeader, 8, Z_DEFAULT_STRATEGY));
  struct End {
    z_stream& stream;
    ~End() { deflateEnd(&stream); }
  } const end{stream};
  std::string bytes(deflateBound(&stream, lengthOf(text)), '\0');
  stream.next_in = bytesOf(text);
  stream.avail_in = lengthOf(text);
  stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_out = lengthOf(bytes);
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::bad_alloc();
  bytes.resize(stream.total_out);
  return bytes;
}

std::optional<Inflated> inflated(std::string_view bytes) {
  z_stream stream{};
  stream.next_in = bytesOf(bytes);
  stream.avail_in = lengthOf(bytes);
  check(inflateInit2(&stream, kWithoutHeader));
  struct End {
    z_stream& stream;
    ~End() { inflateEnd(&stream); }
  } const end{stream};

  Inflated result;
  for (int status = Z_OK; status != Z_STREAM_END;) {
    char chunk[65536];
    stream.next_out = reinterpret_cast<Bytef*>(chunk);
    stream.avail_out = sizeof chunk;
    status = inflate(&stream, Z_NO_FLUSH);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status != Z_OK && status != Z_STREAM_END) return std::nullopt;
    result.text.append(chunk, sizeof chunk - stream.avail_out);
    result.tooLong = result.text.size() > kMostInflated;
    if (result.tooLong) return result;
  }
  return result;
}

}  // namespace ksaml
