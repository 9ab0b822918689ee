#include "kestrelink/signin/Memory.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace kestrelink::signin {
namespace {

class MemoryOfProcess : public Memory {
 public:
  explicit MemoryOfProcess(std::size_t most) : most_(most) {}

  Answer remember(std::string_view identifier, SAMLDate until, SAMLDate now) override {
    const std::lock_guard lock(mutex_);
    const auto known = untils_.find(identifier);
    if (known != untils_.end() && known->second > now) return Answer::known;
    if (untils_.size() >= most_) forgetThoseBefore(now);
    if (untils_.size() >= most_) return Answer::full;
    untils_.insert_or_assign(std::string(identifier), until);
    return Answer::remembered;
  }

 private:
  void forgetThoseBefore(SAMLDate now) {
    if (now < nextCleaning_) return;  // or a full memory is searched for each message
    std::erase_if(untils_, [now](const auto& entry) { return entry.second <= now; });
    nextCleaning_ = now.seconds() + std::chrono::seconds(1);
  }

  const std::size_t most_;
  std::mutex mutex_;
  std::map<std::string, SAMLDate, std::less<>> untils_;
  SAMLDate nextCleaning_ = std::chrono::sys_seconds();
};

}  // namespace

Memory::~Memory() = default;

std::shared_ptr<Memory> newMemory(std::size_t most) {
  return std::make_shared<MemoryOfProcess>(most);
}

}  // namespace kestrelink::signin
