#include "driverhost/InkScreen.h"

namespace {

class DispersedScreen final : public InkScreen {
  public:
    DispersedScreen(std::size_t ink, int32_t bits) : matrix_(ink), bits_(bits) {}

    void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                   std::span<uint8_t> packed) const override {
        HalftoneRow(amounts, bits_, matrix_, place, packed);
    }

  private:
    ThresholdMatrix matrix_;
    int32_t bits_;
};

}  // namespace

std::unique_ptr<InkScreen> MakeDispersedScreen(std::size_t ink, int32_t bits) {
    return std::make_unique<DispersedScreen>(ink, bits);
}
