#include "support/picture.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "support/text.h"

namespace sorvo_tool {
namespace {

// Evenly spaced colours, dark to bright with steadily rising lightness, so that they also read in
// grey. Magma and viridis are those of matplotlib, which are in the public domain (CC0).
using Colours = std::vector<Colour>;

const Colours& colours_of(const PictureStyle& style) {
    static const Colours magma{{0, 0, 4},      {28, 16, 68},    {79, 18, 123},
                               {129, 37, 129}, {181, 54, 122},  {229, 80, 100},
                               {251, 135, 97}, {254, 194, 135}, {252, 253, 191}};
    static const Colours viridis{{68, 1, 84},    {71, 45, 123},  {59, 82, 139},
                                 {44, 114, 142}, {33, 145, 140}, {40, 174, 128},
                                 {94, 201, 98},  {173, 220, 48}, {253, 231, 37}};
    static const Colours gray{{0, 0, 0}, {255, 255, 255}};
    const auto colormap = static_cast<Colormap>(style.colormap.value_or(0));
    return colormap == Colormap::magma ? magma : colormap == Colormap::viridis ? viridis : gray;
}

Colour colour_of(const Colours& colours, double share) {
    if (!(share > 0)) return colours.front();  // NaN as well
    const double at = std::min(share, 1.0) * static_cast<double>(colours.size() - 1);
    const auto lower = std::min(static_cast<std::size_t>(at), colours.size() - 2);
    const double weight = at - static_cast<double>(lower);
    const auto mixed = [&](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * weight));
    };
    const Colour& a = colours[lower];
    const Colour& b = colours[lower + 1];
    return {mixed(a.red, b.red), mixed(a.green, b.green), mixed(a.blue, b.blue)};
}

Colour cell_colour(const Colours& colours, const Picture& picture, float value) {
    const double range = static_cast<double>(picture.highest) - static_cast<double>(picture.lowest);
    return colour_of(colours,
                     (static_cast<double>(value) - static_cast<double>(picture.lowest)) / range);
}

// Cells [first, last) that pixel `i` of `pixel_n` covers: one or, where cells are smaller, several.
struct Span {
    std::size_t first, last;
};
Span cells_under(std::size_t i, std::size_t pixel_n, std::size_t cell_n) {
    const std::size_t first = i * cell_n / pixel_n;
    return {first, std::max(first + 1, (i + 1) * cell_n / pixel_n)};
}

// Where the rows lie: one as high as the next, or octaves as high as octaves.
class FrequencyAxis {
  public:
    FrequencyAxis(const std::vector<double>& row_hz, bool is_logarithmic)
        : hz_(row_hz), is_logarithmic_(is_logarithmic && row_hz.size() > 2) {}

    bool is_logarithmic() const { return is_logarithmic_; }

    // Height of a frequency above the bottom, as a share; outside 0 ... 1 where no row is near.
    double share_of(double hz) const {
        if (is_logarithmic_) return std::log(hz / hz_[1]) / std::log(hz_.back() / hz_[1]);
        return (row_at(hz) + 0.5) / static_cast<double>(hz_.size());
    }

    // The rows under pixel `i` of `pixel_n` from the bottom.
    Span rows_under(std::size_t i, std::size_t pixel_n) const {
        if (!is_logarithmic_) return cells_under(i, pixel_n, hz_.size());
        const auto row = [&](std::size_t pixel) {
            const double share = static_cast<double>(pixel) / static_cast<double>(pixel_n);
            const double hz = hz_[1] * std::pow(hz_.back() / hz_[1], share);
            return std::min(static_cast<std::size_t>(std::lround(row_at(hz))), hz_.size() - 1);
        };
        return {row(i), std::max(row(i) + 1, row(i + 1))};
    }

  private:
    double row_at(double hz) const {
        const auto above = std::lower_bound(hz_.begin(), hz_.end(), hz);
        const auto upper = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(
            above - hz_.begin(), 1, static_cast<std::ptrdiff_t>(hz_.size()) - 1));
        return static_cast<double>(upper - 1) +
               (hz - hz_[upper - 1]) / (hz_[upper] - hz_[upper - 1]);
    }

    const std::vector<double>& hz_;
    bool is_logarithmic_;
};

// Pixels of the picture beside the plot, and above and below.
constexpr int beside = 200;
constexpr int above = 44;
constexpr int below = 54;

double plot_width(const Picture& picture, const PictureStyle& style) {
    const double seconds = picture.seconds_per_column * static_cast<double>(picture.column_n);
    return style.width > 0 ? style.width - beside
                           : std::round(std::clamp(seconds * 200, 640.0, 1600.0));
}

struct Box {
    double left, top, width, height;
};

class Canvas {
  public:
    Canvas(int width, int height)
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
          context_(cairo_create(surface_.get())) {
        cairo_set_source_rgb(context_.get(), 1, 1, 1);
        cairo_paint(context_.get());
        cairo_set_source_rgb(context_.get(), 0.1, 0.1, 0.1);
        cairo_select_font_face(context_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                               CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_line_width(context_.get(), 1);
    }

    void set_pixel(std::size_t x, std::size_t y, Colour colour) {
        cairo_surface_flush(surface_.get());
        auto* row = cairo_image_surface_get_data(surface_.get()) +
                    y * static_cast<std::size_t>(cairo_image_surface_get_stride(surface_.get()));
        reinterpret_cast<std::uint32_t*>(row)[x] =
            static_cast<std::uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
        cairo_surface_mark_dirty(surface_.get());
    }

    double width_of(const std::string& text, double size) {
        cairo_set_font_size(context_.get(), size);
        cairo_text_extents_t extents;
        cairo_text_extents(context_.get(), text.c_str(), &extents);
        return extents.x_advance;
    }

    // Text with the point (x, y) at the share (across, up) of its height and width.
    void text(const std::string& text, double size, double x, double y, double across, double up,
              bool upright = false) {
        const double width = width_of(text, size);
        cairo_save(context_.get());
        cairo_translate(context_.get(), x, y);
        if (upright) cairo_rotate(context_.get(), -std::acos(-1.0) / 2);
        cairo_move_to(context_.get(), -across * width,
                      up * 0.73 * size);  // 0.73: height of a capital
        cairo_show_text(context_.get(), text.c_str());
        cairo_restore(context_.get());
    }

    void line(double x0, double y0, double x1, double y1) {
        cairo_move_to(context_.get(), std::round(x0) + 0.5, std::round(y0) + 0.5);
        cairo_line_to(context_.get(), std::round(x1) + 0.5, std::round(y1) + 0.5);
        cairo_stroke(context_.get());
    }

    void frame(const Box& box) {
        cairo_rectangle(context_.get(), box.left - 0.5, box.top - 0.5, box.width + 1,
                        box.height + 1);
        cairo_stroke(context_.get());
    }

    Pixels pixels() const {
        cairo_surface_flush(surface_.get());
        Pixels result;
        result.width = static_cast<std::size_t>(cairo_image_surface_get_width(surface_.get()));
        result.height = static_cast<std::size_t>(cairo_image_surface_get_height(surface_.get()));
        const auto* data = cairo_image_surface_get_data(surface_.get());
        const auto stride =
            static_cast<std::size_t>(cairo_image_surface_get_stride(surface_.get()));
        for (std::size_t y = 0; y < result.height; ++y)
            for (std::size_t x = 0; x < result.width; ++x) {
                const std::uint32_t pixel =
                    reinterpret_cast<const std::uint32_t*>(data + y * stride)[x];
                result.data.push_back({static_cast<std::uint8_t>(pixel >> 16),
                                       static_cast<std::uint8_t>(pixel >> 8),
                                       static_cast<std::uint8_t>(pixel)});
            }
        return result;
    }

  private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* context) const { cairo_destroy(context); }
    };
    std::unique_ptr<cairo_surface_t, Destroy> surface_;
    std::unique_ptr<cairo_t, Destroy> context_;
};

// Text that is no wider than `width`, if need be without its end.
std::string fitted(Canvas& canvas, std::string text, double size, double width) {
    if (canvas.width_of(text, size) <= width) return text;
    while (!text.empty() && canvas.width_of(text + "…", size) > width) {
        while ((text.back() & 0xC0) == 0x80) text.pop_back();  // the rest of a character in UTF-8
        text.pop_back();
    }
    return text + "…";
}

// Round values, evenly spaced, at most about `tick_n` of them.
std::vector<double> even_ticks(double lowest, double highest, int tick_n) {
    const double rough = std::max(highest - lowest, 1e-9) / tick_n;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    double step = 10 * power;
    for (const double digit : {5.0, 2.0, 1.0})
        if (digit * power >= rough) step = digit * power;
    std::vector<double> ticks;
    const double first = std::ceil(lowest / step - 1e-9) + 0.0;  // + 0: no minus zero
    for (double i = first; i * step <= highest + step * 1e-9; ++i) ticks.push_back(i * step);
    return ticks;
}

// The same for minutes and seconds as a clock has them.
std::vector<double> minute_ticks(double lowest, double highest, int tick_n) {
    double step = 5;
    for (const double next : {10., 15., 30., 60., 120., 300., 600., 900., 1800., 3600.})
        if ((highest - lowest) / step > tick_n) step = next;
    while ((highest - lowest) / step > tick_n) step *= 2;
    std::vector<double> ticks;
    for (double i = std::ceil(lowest / step - 1e-9) + 0.0; i * step <= highest; ++i)
        ticks.push_back(i * step);
    return ticks;
}

std::string minutes_text(double seconds) {
    const auto whole = std::lround(seconds);
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

void draw_cells(Canvas& canvas, const Picture& picture, const FrequencyAxis& axis,
                const Colours& colours, const Box& plot) {
    const auto width = static_cast<std::size_t>(plot.width);
    const auto height = static_cast<std::size_t>(plot.height);
    for (std::size_t y = 0; y < height; ++y) {
        const Span rows = axis.rows_under(height - 1 - y, height);
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t column = cells_under(x, width, picture.shown_n).first;
            float loudest = picture.lowest;
            for (std::size_t row = rows.first; row < rows.last; ++row)
                loudest = std::max(loudest, picture.cells[row * picture.shown_n + column]);
            canvas.set_pixel(static_cast<std::size_t>(plot.left) + x,
                             static_cast<std::size_t>(plot.top) + y,
                             cell_colour(colours, picture, loudest));
        }
    }
    canvas.frame(plot);
}

void draw_time_axis(Canvas& canvas, const Picture& picture, const Box& plot) {
    const double span = picture.seconds_per_column * static_cast<double>(picture.column_n);
    const double left = picture.first_seconds - picture.seconds_per_column / 2;
    const double bottom = plot.top + plot.height;
    const bool in_minutes = span > 100;
    const int tick_n = std::max(3, static_cast<int>(plot.width / 90));
    for (const double seconds : in_minutes ? minute_ticks(left, left + span, tick_n)
                                           : even_ticks(left, left + span, tick_n)) {
        const double x = plot.left + (seconds - left) / span * plot.width;
        canvas.line(x, bottom, x, bottom + 5);
        canvas.text(in_minutes ? minutes_text(seconds) : short_number(seconds), 13, x, bottom + 9,
                    0.5, 1);
    }
    canvas.text(in_minutes ? "Time (min:s)" : "Time (s)", 14, plot.left + plot.width / 2,
                bottom + 30, 0.5, 1);
}

void draw_frequency_axis(Canvas& canvas, const Picture& picture, const FrequencyAxis& axis,
                         const Box& plot) {
    // Even steps for even rows; on a warped scale octaves and what fits between them.
    const auto& hz = picture.row_hz;
    std::vector<double> ticks;
    if (hz.size() < 2) {
        ticks = {};
    } else if (axis.is_logarithmic()) {
        for (double decade = 1; decade < hz.back(); decade *= 10)
            for (const double digit : {1, 2, 5}) ticks.push_back(digit * decade);
    } else if (std::abs((hz[1] - hz[0]) / (hz.back() - hz[hz.size() - 2]) - 1) < 1e-3) {
        ticks = even_ticks(hz.front(), hz.back(), 8);
    } else {
        ticks = {125,  250,  500,   1000,  1500,  2000,  3000,  4000,
                 6000, 8000, 12000, 16000, 24000, 32000, 48000, 96000};
    }
    double lowest_free = plot.top + plot.height + 1;
    for (const double tick : ticks) {
        const double y = plot.top + plot.height * (1 - axis.share_of(tick));
        if (y < plot.top || y > lowest_free) continue;
        canvas.line(plot.left - 6, y, plot.left - 1, y);
        canvas.text(short_number(tick), 13, plot.left - 9, y, 1, 0.5);
        lowest_free = y - 16;
    }
    const bool has_room = canvas.width_of(picture.frequency_label, 14) < plot.height + 2 * above;
    canvas.text(has_room ? picture.frequency_label : "Hz", 14, plot.left - 62,
                plot.top + plot.height / 2, 0.5, 0, true);
}

void draw_colour_bar(Canvas& canvas, const Picture& picture, const Colours& colours,
                     const Box& bar) {
    const auto height = static_cast<std::size_t>(bar.height);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < static_cast<std::size_t>(bar.width); ++x)
            canvas.set_pixel(
                static_cast<std::size_t>(bar.left) + x, static_cast<std::size_t>(bar.top) + y,
                colour_of(colours, 1 - static_cast<double>(y) / static_cast<double>(height - 1)));
    canvas.frame(bar);
    const auto lowest = static_cast<double>(picture.lowest);
    const auto highest = static_cast<double>(picture.highest);
    const double right = bar.left + bar.width;
    for (const double level :
         even_ticks(lowest, highest, std::clamp(static_cast<int>(bar.height / 25), 2, 8))) {
        const double y = bar.top + bar.height * (highest - level) / (highest - lowest);
        canvas.line(right, y, right + 5, y);
        canvas.text(short_number(level) + " dB", 13, right + 9, y, 0, 0.5);
    }
}

Pixels draw_with_axes(const Picture& picture, const PictureStyle& style) {
    // Whole numbers of pixels for each row keep bands equally high.
    constexpr std::size_t least = 400;
    constexpr std::size_t most = 640;
    const std::size_t row_height = (least + picture.row_n - 1) / picture.row_n;
    const double own_height =
        style.log_frequency ? 480 : static_cast<double>(std::min(row_height * picture.row_n, most));
    const Box plot{90, above, plot_width(picture, style),
                   style.height > 0 ? style.height - above - below : own_height};
    const Box bar{plot.left + plot.width + 20, plot.top, 18, plot.height};
    Canvas canvas(static_cast<int>(plot.width) + beside,
                  static_cast<int>(plot.height) + above + below);
    const FrequencyAxis axis(picture.row_hz, style.log_frequency);
    const Colours& colours = colours_of(style);
    draw_cells(canvas, picture, axis, colours, plot);
    draw_time_axis(canvas, picture, plot);
    draw_frequency_axis(canvas, picture, axis, plot);
    draw_colour_bar(canvas, picture, colours, bar);
    const double title_width = plot.width + beside - plot.left - 5;
    canvas.text(fitted(canvas, picture.title, 15, title_width), 15, plot.left, plot.top - 16, 0, 0);
    return canvas.pixels();
}

Pixels draw_raw(const Picture& picture, const Colours& colours) {
    Pixels pixels;
    pixels.width = picture.shown_n;
    pixels.height = picture.row_n;
    pixels.data.reserve(pixels.width * pixels.height);
    for (std::size_t row = picture.row_n; row-- > 0;)
        for (std::size_t column = 0; column < picture.shown_n; ++column)
            pixels.data.push_back(
                cell_colour(colours, picture, picture.cells[row * picture.shown_n + column]));
    return pixels;
}

}  // namespace

void begin(Picture& picture, const PictureStyle& style) {
    picture.shown_n = picture.column_n;
    if (!style.raw)
        picture.shown_n =
            std::min(picture.shown_n, static_cast<std::size_t>(plot_width(picture, style)));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    picture.cells.assign(picture.row_n * picture.shown_n, -infinity);
    picture.lowest = infinity;
    picture.highest = -infinity;
}

void add(Picture& picture, const std::vector<float>& levels) {
    for (const float level : levels) {
        const std::size_t row = picture.added_n / picture.column_n;
        const std::size_t column = picture.added_n % picture.column_n;
        // The last pixel whose span begins at the column or before.
        const std::size_t shown =
            ((column + 1) * picture.shown_n + picture.column_n - 1) / picture.column_n - 1;
        float& cell = picture.cells[row * picture.shown_n + shown];
        cell = std::max(cell, level);
        picture.lowest = std::min(picture.lowest, level);
        picture.highest = std::max(picture.highest, level);
        ++picture.added_n;
    }
}

Pixels draw(const Picture& picture, const PictureStyle& style) {
    return style.raw ? draw_raw(picture, colours_of(style)) : draw_with_axes(picture, style);
}

}  // namespace sorvo_tool
