// Arrays of floats in files: NumPy's .npy and comma-separated text.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace sorvo_tool {

// Row-major. A complex array holds (real, imaginary) pairs, as the library writes them; its shape
// counts pairs.
struct Array {
    std::vector<std::size_t> shape;
    bool is_complex = false;
    std::vector<float> data;
};

// .npy as float32 or complex64.
void write_npy(const std::string& path, const Array& array);

// One line for each row, numbers in the shortest form that reads back as the same float; complex
// numbers as 1.5-0.25j.
void write_csv(const std::string& path, const Array& array);

// Reads .npy of real or complex numbers, single or double precision.
Array read_npy(const std::string& path);

}  // namespace sorvo_tool
