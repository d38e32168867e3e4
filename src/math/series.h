// Polynomials: best approximations for relative errors, found with Sollya's fpminimax.
#pragma once

namespace sorvo::audio {

/// log((1 + s) / (1 - s)) / s in powers of s^2, for |s| < 0.1716: to 2^-45 of it.
constexpr double log_series[] = {0x1.fffffffffff1p0,   0x1.5555555672f6ep-1, 0x1.999996287e768p-2,
                                 0x1.2494396d81145p-2, 0x1.c62089091ac67p-3, 0x1.9198466244d11p-3};

/// The same with the logarithm to base 10.
constexpr double log10_series[] = {0x1.bcb7b1526e43ep-1, 0x1.287a7637ec381p-2,
                                   0x1.63c62477f4c62p-3, 0x1.fc430423675f4p-4,
                                   0x1.8a73276efabdbp-4, 0x1.5cd200cc0408ep-4};

/// atan(t) / t in powers of t^2, for |t| <= 0.5: to 2^-40 of it.
constexpr double atan_series[] = {
    0x1.fffffffffec24p-1,  -0x1.5555554ef4004p-2, 0x1.9999942fd9638p-3,
    -0x1.249165d8b2db7p-3, 0x1.c6f6d6222e9abp-4,  -0x1.7298928bf6acep-4,
    0x1.2e53c59986a15p-4,  -0x1.b2806f157061dp-5, 0x1.7eeed25647681p-6};

}  // namespace sorvo::audio
