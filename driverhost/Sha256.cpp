#include "driverhost/Sha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <vector>

#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "platform/RandomAccessFile.h"

struct Sha256::State {
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> Context{EVP_MD_CTX_new()};
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    if (state_->Context == nullptr ||
        EVP_DigestInit_ex(state_->Context.get(), EVP_sha256(), nullptr) != 1)
        throw HostError(kFailed, "SHA-256 is not available");
}

Sha256::~Sha256() = default;

void Sha256::Add(std::span<const uint8_t> bytes) {
    EVP_DigestUpdate(state_->Context.get(), bytes.data(), bytes.size());
}

std::string Sha256::Hex() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> sum = {};
    unsigned int size = 0;
    EVP_DigestFinal_ex(state_->Context.get(), sum.data(), &size);
    std::string hex;
    for (unsigned int i = 0; i < size; ++i)
        hex += fmt::format("{:02x}", sum[i]);
    return hex;
}

std::string Sha256OfFile(const std::filesystem::path& path) {
    constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
    RandomAccessFile file;
    if (!file.Open(path.string().c_str()))
        throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
    Sha256 sum;
    std::vector<uint8_t> block(kBlockBytes);
    uint64_t offset = 0;
    while (offset < file.Size()) {
        StopWhenInterrupted();
        const std::size_t count = file.ReadAt(offset, block.data(), block.size());
        if (count == 0) throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
        sum.Add(std::span(block).first(count));
        offset += count;
    }
    return sum.Hex();
}
