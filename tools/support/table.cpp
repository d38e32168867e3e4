#include "support/table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "support/array.h"

namespace sorvo_tool {
namespace {

constexpr std::size_t memory_float_n = 4 << 20;  // beyond which a table goes to its file
constexpr std::size_t piece_float_n = 1 << 16;

void append_number(std::string& text, float value, bool with_sign) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    if (with_sign && digits[0] != '-') text += '+';
    text.append(digits.data(), end.ptr);
}

}  // namespace

Table::Table(std::size_t row_n, bool is_complex, std::string folder)
    : row_n_(row_n), cell_n_(is_complex ? 2 : 1), folder_(std::move(folder)) {}

void Table::append(const float* block, std::size_t column_n) {
    chunks_.push_back({memory_.size(), column_n});
    memory_.insert(memory_.end(), block, block + row_n_ * column_n * cell_n_);
    column_n_ += column_n;
    if (memory_.size() > memory_float_n) spill();
}

// Moves the memory to the file, as one chunk with long rows.
void Table::spill() {
    if (!spilled_) spilled_ = std::make_unique<TemporaryFile>(folder_);
    spilled_chunks_.push_back({spilled_->size() / sizeof(float), 0});
    for (const Chunk& chunk : chunks_) spilled_chunks_.back().column_n += chunk.column_n;
    std::vector<float> row;
    for (std::size_t i = 0; i < row_n_; ++i) {
        row.clear();
        for (const Chunk& chunk : chunks_) {
            const std::size_t n = chunk.column_n * cell_n_;
            const float* const begin = &memory_[chunk.at + i * n];
            row.insert(row.end(), begin, begin + n);
        }
        spilled_->append(row.data(), row.size() * sizeof(float));
    }
    chunks_.clear();
    memory_.clear();
}

void Table::drop_columns(std::size_t column_n) {
    column_n_ -= column_n;  // those beyond are passed over
}

void Table::read(const std::vector<Chunk>& chunks, std::uint64_t at, std::size_t n,
                 float* dst) const {
    if (&chunks == &chunks_)
        std::copy_n(&memory_[at], n, dst);
    else
        spilled_->read(dst, n * sizeof(float), at * sizeof(float));
}

std::vector<float> Table::columns(std::size_t first, std::size_t column_n) const {
    const std::size_t n = column_n * cell_n_;
    const std::size_t begin = first * cell_n_;
    std::vector<float> result(row_n_ * n);
    std::size_t chunk_begin = 0;
    for (const auto* chunks : {&spilled_chunks_, &chunks_})
        for (const Chunk& chunk : *chunks) {
            const std::size_t row_float_n = chunk.column_n * cell_n_;
            const std::size_t from = std::max(begin, chunk_begin);
            const std::size_t to = std::min(begin + n, chunk_begin + row_float_n);
            for (std::size_t row = 0; from < to && row < row_n_; ++row)
                read(*chunks, chunk.at + row * row_float_n + from - chunk_begin, to - from,
                     &result[row * n + from - begin]);
            chunk_begin += row_float_n;
        }
    return result;
}

void Table::for_each_piece(const Take& take) const {
    std::vector<float> cells;
    for (std::size_t row = 0; row < row_n_; ++row) {
        std::size_t left_n = column_n_ * cell_n_;
        for (const auto* chunks : {&spilled_chunks_, &chunks_})
            for (const Chunk& chunk : *chunks) {
                const std::size_t row_float_n = chunk.column_n * cell_n_;
                const std::size_t end = std::min(row_float_n, left_n);
                left_n -= end;
                for (std::size_t start = 0; start < end; start += piece_float_n) {
                    cells.resize(std::min(piece_float_n, end - start));
                    read(*chunks, chunk.at + row * row_float_n + start, cells.size(), cells.data());
                    take(cells);
                }
            }
    }
}

TableWriter::TableWriter(const std::string& path, const std::string& ending, const Table& table,
                         bool is_flat)
    : file_(path),
      is_csv_(ending == ".csv"),
      is_complex_(table.is_complex()),
      column_n_(table.column_n()) {
    std::vector<std::size_t> shape{table.row_n(), table.column_n()};
    if (is_flat && table.row_n() == 1) shape.erase(shape.begin());
    if (!is_csv_) file_.write(npy_header(shape, is_complex_));
}

void TableWriter::write(const std::vector<float>& cells) {
    if (!is_csv_) {
        file_.write(cells.data(), cells.size() * sizeof(float));
        return;
    }
    text_.clear();
    const std::size_t cell_n = is_complex_ ? 2 : 1;
    for (std::size_t i = 0; i < cells.size(); i += cell_n) {
        if (column_ > 0) text_ += ',';
        append_number(text_, cells[i], false);
        if (is_complex_) {
            append_number(text_, cells[i + 1], true);
            text_ += 'j';
        }
        column_ = (column_ + 1) % column_n_;
        if (column_ == 0) text_ += '\n';
    }
    file_.write(text_);
}

}  // namespace sorvo_tool
