// The preview scaler against the evaluation pixel by pixel that it stands for.

#include "preview/PreviewScaler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "DirectPreview.h"
#include "preview/convertCMYKtoRGB.h"

namespace {

struct PageShape {
    int width, height, bits;
    int xResolution, yResolution;
    int previewWidth, previewHeight;  ///< height 0: best fit
};

/// A picture in memory.
class Canvas final : public Image_Writer {
  public:
    void Create(const AString& /*name*/, int width, int height) override {
        Width = width;
        Height = height;
        Pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), {});
    }
    void SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) override {
        Pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(Width) +
                  static_cast<std::size_t>(x)) = {r, g, b};
    }
    int Save() override { return 1; }

    int Width = 0;
    int Height = 0;
    std::vector<std::array<int, 3>> Pixels;
};

TEST(PreviewGeometry, KeepsThePhysicalShapeOfThePage) {
    const struct {
        int box[2];  ///< height 0: best fit
        int page[2], resolution[2];
        int preview[2];
        double scale[2], offset[2];
    } cases[] = {
        {{500, 500}, {100, 100}, {300, 600}, {500, 500}, {1, 1}, {200, 200}},
        {{500, 0}, {2000, 1000}, {300, 300}, {500, 250}, {0.25, 0.25}, {0, 0}},
        {{500, 0}, {1000, 2000}, {300, 300}, {250, 500}, {0.25, 0.25}, {0, 0}},
        {{500, 0}, {1000, 1000}, {720, 360}, {250, 500}, {0.25, 0.5}, {0, 0}},
        {{500, 0}, {1000, 1000}, {0, 360}, {500, 500}, {0.5, 0.5}, {0, 0}},
        {{500, 0}, {5000, 1}, {300, 300}, {500, 1}, {0.1, 0.1}, {0, 0.45}},
        {{400, 100}, {200, 200}, {360, 720}, {400, 100}, {1, 0.5}, {100, 0}},
        // As wide or as high as the box, it is shaped like any other.
        {{100, 80}, {100, 80}, {300, 600}, {100, 80}, {1, 0.5}, {0, 20}},
        {{100, 80}, {100, 79}, {300, 600}, {100, 80}, {1, 0.5}, {0, 20.25}},
        {{100, 80}, {99, 80}, {600, 300}, {100, 80}, {0.5, 1}, {25.25, 0}},
        {{100, 80}, {99, 79}, {600, 300}, {100, 80}, {1, 1}, {0.5, 0.5}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::Message() << row.page[0] << "x" << row.page[1] << " in " << row.box[0]
                                        << "x" << row.box[1]);
        const PreviewGeometry fit =
            row.box[1] == 0 ? FitBest(row.box[0], row.page[0], row.page[1], row.resolution[0],
                                      row.resolution[1])
                            : FitIntoBox(row.box[0], row.box[1], row.page[0], row.page[1],
                                         row.resolution[0], row.resolution[1]);
        EXPECT_EQ(fit.previewWidth, row.preview[0]);
        EXPECT_EQ(fit.previewHeight, row.preview[1]);
        EXPECT_DOUBLE_EQ(fit.scaleX, row.scale[0]);
        EXPECT_DOUBLE_EQ(fit.scaleY, row.scale[1]);
        EXPECT_DOUBLE_EQ(fit.offsetX, row.offset[0]);
        EXPECT_DOUBLE_EQ(fit.offsetY, row.offset[1]);
    }
}

TEST(PreviewScaler, DiffersFromTheDirectEvaluationByOneLevelAtMost) {
    const PageShape shapes[] = {
        {1000, 700, 1, 300, 300, 50, 0},  {1001, 333, 1, 600, 300, 64, 40},
        {333, 1999, 1, 300, 600, 100, 0}, {4001, 60, 1, 720, 360, 500, 500},
        {97, 89, 1, 1, 1, 200, 200},      {200, 50, 1, 0, 300, 199, 120},
        {640, 480, 2, 300, 300, 77, 0},   {641, 479, 4, 360, 720, 80, 33},
        {643, 481, 8, 300, 300, 500, 0},  {50, 60, 8, 300, 300, 70, 70},
        {5000, 5, 1, 300, 300, 30, 0},    {9, 7000, 2, 9, 7000, 1, 1},
        {63, 65, 2, 300, 300, 64, 0},     {1, 1, 1, 300, 300, 1, 0},
        {10, 300, 1, 20, 720, 20, 50},  // wider than it was
    };
    for (const PageShape& shape : shapes) {
        SCOPED_TRACE(testing::Message() << shape.width << "x" << shape.height << ", " << shape.bits
                                        << " bits in " << shape.previewWidth);
        PreviewScaler scaler;
        if (shape.previewHeight == 0)
            scaler.InitBestFit(shape.previewWidth, shape.width, shape.height, shape.xResolution,
                               shape.yResolution);
        else
            scaler.Init(shape.previewWidth, shape.previewHeight, shape.width, shape.height,
                        shape.xResolution, shape.yResolution);
        DirectPreview direct(scaler.Geometry());
        std::mt19937 random(static_cast<uint32_t>(shape.width));
        const int lineBytes = (shape.width + 31) / 32 * 4 * shape.bits;
        for (int plane = 0; plane < 4; ++plane) {
            for (int row = -1; row <= shape.height; ++row) {
                std::vector<uint8_t> line(static_cast<std::size_t>(lineBytes));
                // The last plane is empty but for some stripes.
                for (uint8_t& byte : line)
                    if (plane != 3 || row / 75 % 3 == 1)
                        byte = static_cast<uint8_t>(random() & (plane % 2 == 0 ? random() : 0xFF));
                if (row == 3 && plane == 1) continue;  // a line that never comes
                scaler.AddRow(row, line.data(), lineBytes, shape.bits, plane);
                direct.AddRow(row, line, shape.bits, static_cast<std::size_t>(plane));
            }
        }
        const std::vector<uint8_t> full(static_cast<std::size_t>(lineBytes), 0xFF);
        scaler.AddRow(0, full.data(), lineBytes, shape.bits, 4);
        Canvas canvas;
        scaler.Render("", &canvas, 0);
        ASSERT_EQ(canvas.Width, scaler.Geometry().previewWidth);
        int worst = 0;
        for (int y = 0; y < canvas.Height; ++y) {
            for (int x = 0; x < canvas.Width; ++x) {
                const auto expected = direct.Pixel(x, y);
                const auto& pixel = canvas.Pixels[static_cast<std::size_t>(y * canvas.Width + x)];
                for (std::size_t i = 0; i < 3; ++i)
                    worst = std::max(worst, std::abs(pixel[i] - expected[i]));
            }
        }
        EXPECT_LE(worst, 1);
    }
}

}  // namespace
