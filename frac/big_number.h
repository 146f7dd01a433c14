// Owners of GMP's integers and MPFR's floating-point numbers. The numbers are handed to the
// libraries' functions as they are.
#pragma once

#include <gmp.h>
#include <mpfr.h>

#include <utility>

class Integer {
  public:
    Integer() { mpz_init(number); }
    explicit Integer(long n) { mpz_init_set_si(number, n); }
    Integer(const Integer& other) { mpz_init_set(number, other.number); }
    Integer(Integer&& other) noexcept : Integer() { mpz_swap(number, other.number); }
    Integer& operator=(Integer other) {
        mpz_swap(number, other.number);
        return *this;
    }
    ~Integer() { mpz_clear(number); }

    operator mpz_ptr() { return number; }
    operator mpz_srcptr() const { return number; }

  private:
    mpz_t number;
};

// -1, 0 or 1. GMP's own is a macro that takes pointers alone.
inline int sign(const Integer& n) {
    mpz_srcptr number = n;
    return mpz_sgn(number);
}

class Big {
  public:
    explicit Big(mpfr_prec_t bits) { mpfr_init2(number, bits); }
    Big(const Big&) = delete;
    Big& operator=(const Big&) = delete;
    ~Big() { mpfr_clear(number); }

    operator mpfr_ptr() { return number; }
    operator mpfr_srcptr() const { return number; }

  private:
    mpfr_t number;
};
