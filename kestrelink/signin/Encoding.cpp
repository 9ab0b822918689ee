#include "kestrelink/signin/Encoding.h"

#include <resolv.h>

#include <limits>
#include <new>

// zlib then takes its input as const.
#define ZLIB_CONST
#include <zlib.h>

#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

#define LETTERS "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
constexpr std::string_view kBase64 = LETTERS "0123456789+/=";
constexpr std::string_view kPlainInUrl = LETTERS "0123456789-._~";
#undef LETTERS
constexpr std::string_view kHex = "0123456789ABCDEF";

constexpr int kWithoutHeader = -15;

const Bytef* bytesOf(std::string_view text) { return reinterpret_cast<const Bytef*>(text.data()); }

uInt lengthOf(std::string_view text) {
  if (text.size() > std::numeric_limits<uInt>::max()) throw std::bad_alloc();
  return static_cast<uInt>(text.size());
}

// The arguments are valid, so zlib is out of memory.
void check(int status) {
  if (status != Z_OK) throw std::bad_alloc();
}

int hexDigit(char character) {
  if (character >= 'a' && character <= 'f') character = static_cast<char>(character - 'a' + 'A');
  const std::size_t value = kHex.find(character);
  return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

}  // namespace

std::optional<std::string> fromBase64(std::string_view text) {
  std::string characters;
  characters.reserve(text.size());
  for (const char each : text) {
    if (each == ' ' || each == '\t' || each == '\r' || each == '\n') continue;
    // `b64_pton` stops at a NUL, and skips what is a blank in the process's locale.
    if (kBase64.find(each) == std::string_view::npos) return std::nullopt;
    characters += each;
  }
  // `b64_pton` needs space for one group more than it decodes.
  std::string bytes(characters.size() / 4 * 3 + 3, '\0');
  const int length =
      b64_pton(characters.c_str(), reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
  if (length < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::string toBase64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // `b64_ntop` ends it with a NUL
  b64_ntop(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), text.data(),
           text.size());
  text.pop_back();
  return text;
}

std::optional<std::string> inflated(std::string_view bytes, std::size_t most) {
  z_stream stream{};
  stream.next_in = bytesOf(bytes);
  stream.avail_in = lengthOf(bytes);
  check(inflateInit2(&stream, kWithoutHeader));
  struct End {
    z_stream& stream;
    ~End() { inflateEnd(&stream); }
  } const end{stream};

  std::string text;
  for (int status = Z_OK; status != Z_STREAM_END;) {
    char chunk[16384];
    stream.next_out = reinterpret_cast<Bytef*>(chunk);
    stream.avail_out = sizeof chunk;
    status = inflate(&stream, Z_NO_FLUSH);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status != Z_OK && status != Z_STREAM_END) return std::nullopt;
    text.append(chunk, sizeof chunk - stream.avail_out);
    if (text.size() <= most) continue;
    refuse(Reason::tooLong, "the message inflates to more than " + std::to_string(most) + " bytes");
  }
  return text;
}

std::string deflated(std::string_view bytes) {
  z_stream stream{};
  check(
      deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kWithoutHeader, 8, Z_DEFAULT_STRATEGY));
  struct End {
    z_stream& stream;
    ~End() { deflateEnd(&stream); }
  } const end{stream};
  std::string result(deflateBound(&stream, lengthOf(bytes)), '\0');
  stream.next_in = bytesOf(bytes);
  stream.avail_in = lengthOf(bytes);
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = lengthOf(result);
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::bad_alloc();
  result.resize(stream.total_out);
  return result;
}

std::optional<std::string> fromUrlText(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      decoded += text[at];
      continue;
    }
    const int high = at + 2 < text.size() ? hexDigit(text[at + 1]) : -1;
    const int low = at + 2 < text.size() ? hexDigit(text[at + 2]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    decoded += static_cast<char>(high * 16 + low);
    at += 2;
  }
  return decoded;
}

std::string toUrlText(std::string_view text) {
  std::string encoded;
  for (const char each : text) {
    if (kPlainInUrl.find(each) != std::string_view::npos) {
      encoded += each;
      continue;
    }
    const auto byte = static_cast<unsigned char>(each);
    encoded += {'%', kHex[byte >> 4U], kHex[byte & 15U]};
  }
  return encoded;
}

}  // namespace kestrelink::signin
