// An array of rows that grows by columns, as spectrograms do, in a bounded piece of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/output_file.h"
#include "support/temporary_file.h"

namespace sorvo_tool {

class Table {
  public:
    // Cells of one float, or of two if they are complex. What takes more than some megabytes goes
    // to a temporary file in `folder`.
    Table(std::size_t row_n, bool is_complex, std::string folder);

    std::size_t row_n() const { return row_n_; }
    std::size_t column_n() const { return column_n_; }
    bool is_complex() const { return cell_n_ == 2; }

    void append(const float* block, std::size_t column_n);  // [row_n][column_n]
    void drop_columns(std::size_t column_n);                // the last ones

    // [row_n][column_n]
    std::vector<float> columns(std::size_t first, std::size_t column_n) const;

    // The cells in order, row by row, in pieces that belong to one row.
    using Take = std::function<void(std::vector<float>& cells)>;
    void for_each_piece(const Take& take) const;

  private:
    struct Chunk {         // [row_n][column_n] cells
        std::uint64_t at;  // in floats, of the memory or of the file
        std::size_t column_n;
    };
    void spill();
    // Floats from `at` on of the file or the memory, where `chunks` are.
    void read(const std::vector<Chunk>& chunks, std::uint64_t at, std::size_t n, float* dst) const;

    std::size_t row_n_;
    std::size_t cell_n_;
    std::string folder_;
    std::size_t column_n_ = 0;
    std::vector<Chunk> spilled_chunks_;
    std::unique_ptr<TemporaryFile> spilled_;
    std::vector<Chunk> chunks_;
    std::vector<float> memory_;
};

// Writes the cells of a table, in its order, as .npy (float32 or complex64) or .csv: one line for
// each row, numbers in the shortest form that reads back as the same float, complex ones as
// 1.5-0.25j.
class TableWriter {
  public:
    // A single row is an array of one dimension if `is_flat`.
    TableWriter(const std::string& path, const std::string& ending, const Table& table,
                bool is_flat = false);
    void write(const std::vector<float>& cells);
    void commit() { file_.commit(); }

  private:
    OutputFile file_;
    bool is_csv_;
    bool is_complex_;
    std::size_t column_n_;
    std::size_t column_ = 0;
    std::string text_;
};

}  // namespace sorvo_tool
