// Points, vectors and affine matrices of the drawing database. Header only: the host
// interface passes points and transforms without linking the drawing database.
#pragma once

#include <array>
#include <cmath>

namespace cad {

struct Vector3d {
    double x = 0, y = 0, z = 0;

    constexpr Vector3d operator+(const Vector3d& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vector3d operator-(const Vector3d& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vector3d operator*(double s) const { return {x * s, y * s, z * s}; }
    constexpr bool operator==(const Vector3d&) const = default;
    double Length() const { return std::sqrt(x * x + y * y + z * z); }
};

struct Point3d {
    double x = 0, y = 0, z = 0;

    constexpr Point3d operator+(const Vector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
    constexpr Point3d operator-(const Vector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
    constexpr Vector3d operator-(const Point3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
    constexpr bool operator==(const Point3d&) const = default;
    double DistanceTo(const Point3d& p) const { return (*this - p).Length(); }
};

// A 4x4 affine transform acting on column vectors: p' = M * p.
class Matrix3d {
public:
    constexpr Matrix3d() : m_{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}} {}

    static constexpr Matrix3d Identity() { return {}; }
    static constexpr Matrix3d Translation(const Vector3d& v) {
        Matrix3d r;
        r.m_[0][3] = v.x;
        r.m_[1][3] = v.y;
        r.m_[2][3] = v.z;
        return r;
    }
    // Rotation about the Z axis through `centre`, angle in radians, counter-clockwise.
    static Matrix3d Rotation(double angle, const Point3d& centre = {}) {
        Matrix3d r;
        const double c = std::cos(angle), s = std::sin(angle);
        r.m_[0][0] = c;
        r.m_[0][1] = -s;
        r.m_[1][0] = s;
        r.m_[1][1] = c;
        const Vector3d toOrigin{centre.x, centre.y, centre.z};
        return Translation(toOrigin) * r * Translation(toOrigin * -1.0);
    }
    static constexpr Matrix3d Scaling(double s, const Point3d& centre = {}) {
        return Scaling(s, s, s, centre);
    }
    static constexpr Matrix3d Scaling(double sx, double sy, double sz, const Point3d& centre = {}) {
        Matrix3d r;
        r.m_[0][0] = sx;
        r.m_[1][1] = sy;
        r.m_[2][2] = sz;
        const Vector3d toOrigin{centre.x, centre.y, centre.z};
        return Translation(toOrigin) * r * Translation(toOrigin * -1.0);
    }

    // Composition: (A * B) applies B first, then A.
    constexpr Matrix3d operator*(const Matrix3d& o) const {
        Matrix3d r;
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                double sum = 0;
                for (int k = 0; k < 4; ++k) {
                    sum += m_[i][k] * o.m_[k][j];
                }
                r.m_[i][j] = sum;
            }
        }
        return r;
    }

    constexpr Point3d Apply(const Point3d& p) const {
        return {m_[0][0] * p.x + m_[0][1] * p.y + m_[0][2] * p.z + m_[0][3],
                m_[1][0] * p.x + m_[1][1] * p.y + m_[1][2] * p.z + m_[1][3],
                m_[2][0] * p.x + m_[2][1] * p.y + m_[2][2] * p.z + m_[2][3]};
    }
    constexpr Vector3d Apply(const Vector3d& v) const {
        return {m_[0][0] * v.x + m_[0][1] * v.y + m_[0][2] * v.z,
                m_[1][0] * v.x + m_[1][1] * v.y + m_[1][2] * v.z,
                m_[2][0] * v.x + m_[2][1] * v.y + m_[2][2] * v.z};
    }

    // Inverse of the affine part; false (and the identity) when the matrix is singular.
    bool Invert(Matrix3d& out) const {
        const auto& a = m_;
        const double det = a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
                           a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
                           a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
        out = Matrix3d();
        if (std::abs(det) < 1e-300) {
            return false;
        }
        auto& b = out.m_;
        b[0][0] = (a[1][1] * a[2][2] - a[1][2] * a[2][1]) / det;
        b[0][1] = (a[0][2] * a[2][1] - a[0][1] * a[2][2]) / det;
        b[0][2] = (a[0][1] * a[1][2] - a[0][2] * a[1][1]) / det;
        b[1][0] = (a[1][2] * a[2][0] - a[1][0] * a[2][2]) / det;
        b[1][1] = (a[0][0] * a[2][2] - a[0][2] * a[2][0]) / det;
        b[1][2] = (a[0][2] * a[1][0] - a[0][0] * a[1][2]) / det;
        b[2][0] = (a[1][0] * a[2][1] - a[1][1] * a[2][0]) / det;
        b[2][1] = (a[0][1] * a[2][0] - a[0][0] * a[2][1]) / det;
        b[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) / det;
        for (int i = 0; i < 3; ++i) {
            b[i][3] = -(b[i][0] * a[0][3] + b[i][1] * a[1][3] + b[i][2] * a[2][3]);
        }
        return true;
    }

    constexpr double operator()(int row, int col) const { return m_[row][col]; }
    constexpr double& operator()(int row, int col) { return m_[row][col]; }

private:
    std::array<std::array<double, 4>, 4> m_;
};

// The user coordinate system: an origin and two axes, all in world coordinates.
struct Ucs {
    Point3d origin;
    Vector3d xAxis{1, 0, 0};
    Vector3d yAxis{0, 1, 0};

    Matrix3d ToWorld() const {
        const Vector3d z{xAxis.y * yAxis.z - xAxis.z * yAxis.y,
                         xAxis.z * yAxis.x - xAxis.x * yAxis.z,
                         xAxis.x * yAxis.y - xAxis.y * yAxis.x};
        Matrix3d m;
        m(0, 0) = xAxis.x, m(0, 1) = yAxis.x, m(0, 2) = z.x, m(0, 3) = origin.x;
        m(1, 0) = xAxis.y, m(1, 1) = yAxis.y, m(1, 2) = z.y, m(1, 3) = origin.y;
        m(2, 0) = xAxis.z, m(2, 1) = yAxis.z, m(2, 2) = z.z, m(2, 3) = origin.z;
        return m;
    }
    Point3d ToWorld(const Point3d& p) const { return ToWorld().Apply(p); }
};

}  // namespace cad
