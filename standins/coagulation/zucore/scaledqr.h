// SPDX-License-Identifier: MIT
#pragma once

#include <Eigen/QR>

#include <limits>

namespace coagulation::curvefit {

/// A matrix decomposed with its columns scaled to the length 1, so that the rank does not depend on
/// the units of the coefficients.
class ScaledQr {
public:
    /// \param threshold the smallest pivot, relative to the largest, that counts for the rank
    explicit ScaledQr(const Eigen::MatrixXd &matrix,
                      double threshold = std::numeric_limits<double>::epsilon())
        : lengths(matrix.colwise().norm().transpose())
        , decomposition(matrix * lengths.unaryExpr(&scaleOf).asDiagonal())
    {
        decomposition.setThreshold(threshold * static_cast<double>(matrix.cols()));
    }

    bool hasFullRank() const
    {
        return lengths.allFinite() && lengths.minCoeff() > 0.0
            && decomposition.rank() == lengths.size();
    }

    /// \return the least-squares solution
    Eigen::VectorXd solve(const Eigen::VectorXd &right) const
    {
        return decomposition.solve(right).cwiseQuotient(lengths);
    }

    /// \return the first columns of Q, which span the columns of the matrix
    Eigen::MatrixXd basis() const
    {
        return decomposition.householderQ()
            * Eigen::MatrixXd::Identity(decomposition.rows(), decomposition.cols());
    }

    const Eigen::VectorXd &columnLengths() const { return lengths; }

private:
    /// \return the factor that brings a column to the length 1; a column of zeros stays what it is
    static double scaleOf(double length) { return length > 0.0 ? 1.0 / length : 1.0; }

    Eigen::VectorXd lengths;
    Eigen::ColPivHouseholderQR<Eigen::MatrixXd> decomposition;
};

} // namespace coagulation::curvefit
