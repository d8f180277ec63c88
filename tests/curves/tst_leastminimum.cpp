// SPDX-License-Identifier: MIT
/// The logistic fit of noisy calibrations against a reference: a search of its own from a dense grid of
/// starts, with its own model.

#include "coagulation/zucore/curvefit.h"

#include <QTest>

#include <Eigen/LU>
#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <random>

using coagulation::curvefit::Fit;
using coagulation::curvefit::fitLogistic;

using Values = std::vector<double>;
using Eigen::VectorXd;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int curves = 50; // which take as long as all of them elsewhere
#elif defined(Q_OS_WIN)
constexpr int curves = 250; // the exponential function of the C library takes four times as long
#else
constexpr int curves = 1000;
#endif

/// Random numbers that are the same with every standard library: its distributions are not.
class Random {
public:
    explicit Random(unsigned seed)
        : generator(seed)
    {
    }

    double uniform(double low, double high)
    {
        return std::lerp(low, high, (static_cast<double>(generator()) + 0.5) / 4294967296.0);
    }

    bool chance(double probability) { return uniform(0.0, 1.0) < probability; }

    /// \return a number of nearly normal distribution, with the standard deviation 1
    double deviation()
    {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i)
            sum += uniform(0.0, 1.0);
        return sum;
    }

private:
    std::mt19937 generator;
};

struct Calibration {
    Values x;
    Values y;
};

/// A dilution series of 5 to 12 concentrations, some with 0, measured once or twice with a noise of up
/// to 10 % of the height, half of them with 10 %. The curve rises or falls, somewhere within the series, gently to steeply.
Calibration randomCalibration(Random &random)
{
    const int count = 5 + static_cast<int>(random.uniform(0.0, 8.0));
    const double dilution = std::exp(random.uniform(std::log(1.5), std::log(10.0)));
    const double lowest = std::pow(10.0, random.uniform(-2.0, 2.0));
    const bool withZero = random.chance(0.25);
    const int replicates = random.chance(0.3) ? 2 : 1;
    const int above0 = withZero ? count - 1 : count;
    const double width = std::log(dilution) * (above0 - 1);

    const double b = std::exp(random.uniform(0.0, std::log(60.0))) / width;
    const double lnC = std::log(lowest) + random.uniform(0.0, 1.0) * width;
    const double height = random.uniform(1.0, 100.0) * (random.chance(0.5) ? -1.0 : 1.0);
    const double base = random.uniform(-10.0, 110.0);
    const double noise =
        0.1 * std::min(1.0, random.uniform(0.0, 2.0)) * (random.chance(0.1) ? 0 : 1);

    Calibration calibration;
    for (int i = 0; i < count; ++i) {
        const double x =
            withZero && i == 0 ? 0.0 : lowest * std::pow(dilution, withZero ? i - 1 : i);
        const double share = 1.0 / (1.0 + std::exp(b * (lnC - std::log(x))));
        for (int replicate = 0; replicate < replicates; ++replicate) {
            calibration.x.push_back(x);
            calibration.y.push_back(base + height * (share + noise * random.deviation()));
        }
    }
    return calibration;
}

/// The least sum of squared residuals that any search came to.
struct Least {
    double sum = std::numeric_limits<double>::infinity();
    bool determined = false; ///< by a minimum whose parameters the points tell with four digits
};

/// Searches by damped steps over ln b and ln c, with derivatives by differences, from a dense grid.
class Reference {
public:
    explicit Reference(const Calibration &calibration)
        : y(Eigen::Map<const VectorXd>(calibration.y.data(),
                                       static_cast<Eigen::Index>(calibration.y.size())))
        , lnX(y.size())
    {
        for (Eigen::Index i = 0; i < y.size(); ++i) {
            const double x = calibration.x[static_cast<std::size_t>(i)];
            lnX[i] = x > 0.0 ? std::log(x) : -1e9;
            if (x > 0.0 && (places.empty() || lnX[i] > places.back() + 1e-9))
                places.push_back(lnX[i]);
        }
        middle = 0.5 * (places.front() + places.back());
    }

    /// \return the least sum from all starts
    Least least() const
    {
        constexpr int levels = 24;
        const double width = places.back() - places.front();
        const double gap = width / static_cast<double>(places.size() - 1);
        Least least;
        VectorXd best;
        for (int level = 0; level < levels; ++level) {
            const double lnB =
                std::lerp(std::log(0.3 / width), std::log(25.0 / gap), level / (levels - 1.0));
            for (const double lnC : grid(width, gap)) {
                VectorXd shape = Eigen::Vector2d(lnB, lnC);
                const double sum = search(shape);
                if (sum < least.sum) {
                    least.sum = sum;
                    best = shape;
                }
            }
        }
        least.determined = isDetermined(best);
        return least;
    }

private:
    /// \return the starts' ln c
    Values grid(double width, double gap) const
    {
        Values grid;
        for (const double distance :
             {0.5 * gap, gap, 0.5 * width, width, 2.0 * width, 3.0 * width}) {
            grid.push_back(places.front() - distance);
            grid.push_back(places.back() + distance);
        }
        const auto quarters = 4 * (places.size() - 1);
        for (std::size_t i = 0; i <= quarters; ++i)
            grid.push_back(places.front() + 0.25 * gap * static_cast<double>(i));
        return grid;
    }

    /// \param shape ln b and ln c
    /// \return the residuals with the plateaus that fit best
    VectorXd residuals(const VectorXd &shape) const
    {
        const auto [base, height, share] = curve(shape);
        return (height * share - y).array() + base;
    }

    struct Curve {
        double base;
        double height;
        VectorXd share;
    };

    /// The curve is base + height share, where the share is that of the plateau farther from the middle
    /// of the points: it keeps its digits where it is small.
    Curve curve(const VectorXd &shape) const
    {
        const double b = std::exp(shape[0]) * (shape[1] > middle ? 1.0 : -1.0);
        const VectorXd share =
            (1.0 + (b * (shape[1] - lnX.array())).min(700.0).max(-700.0).exp()).inverse();
        const VectorXd centred = share.array() - share.mean();
        const double squares = centred.squaredNorm();
        const double height = squares > 0.0 ? centred.dot(y) / squares : 0.0;
        return {y.mean() - height * share.mean(), height, share};
    }

    /// \return the derivatives of the residuals by ln b and by b ln c
    Eigen::MatrixXd derivatives(const VectorXd &shape) const
    {
        constexpr double difference = 1e-6;
        const Eigen::Vector2d units(1.0, std::exp(-shape[0]));
        Eigen::MatrixXd derivatives(y.size(), 2);
        for (Eigen::Index k = 0; k < 2; ++k) {
            const VectorXd step = difference * units[k] * VectorXd::Unit(2, k);
            derivatives.col(k) =
                (residuals(shape + step) - residuals(shape - step)) / (2.0 * difference);
        }
        return derivatives;
    }

    /// \param shape start and end of the search
    /// \return the sum at its end
    double search(VectorXd &shape) const
    {
        double damping = 1e-3;
        VectorXd at = residuals(shape);
        for (int iteration = 0; iteration < 60; ++iteration) {
            const double before = at.squaredNorm();
            const Eigen::MatrixXd byShape = derivatives(shape);
            const Eigen::Vector2d units(1.0, std::exp(-shape[0]));
            for (int attempt = 0; attempt < 10; ++attempt) {
                Eigen::Matrix2d normal = byShape.transpose() * byShape;
                normal.diagonal() *= 1.0 + damping;
                Eigen::Vector2d step = -normal.inverse() * byShape.transpose() * at;
                step /= std::max({1.0, std::abs(step[0]), std::abs(step[1]) / 4.0});
                const VectorXd next = shape + step.cwiseProduct(units);
                const VectorXd atNext = residuals(next);
                if (next.allFinite() && atNext.squaredNorm() < at.squaredNorm()) {
                    shape = next;
                    at = atNext;
                    damping *= 0.2;
                    break;
                }
                damping = std::max(8.0 * damping, 1e-6);
            }
            if (before - at.squaredNorm() <= 1e-11 * before)
                break;
        }
        return at.squaredNorm();
    }

    bool isDetermined(const VectorXd &shape) const
    {
        const auto [base, height, share] = curve(shape);
        const VectorXd rise = share.array() * (1.0 - share.array()); // by the exponent
        Eigen::MatrixXd jacobian(y.size(),
                                 4); // by both plateaus, b and c, each relative to its size
        jacobian << share, VectorXd::Ones(y.size()) - share, rise * std::exp(shape[0]),
            rise.cwiseProduct((lnX.array().max(-1e3) - shape[1]).matrix()) * std::exp(shape[0]);
        const VectorXd influences = jacobian.colwise().norm();
        if (influences.minCoeff() < 1e-4)
            return false;

        const auto decomposition =
            Eigen::MatrixXd(jacobian * influences.cwiseInverse().asDiagonal())
                .jacobiSvd(Eigen::ComputeThinU);
        const VectorXd &singular = decomposition.singularValues();
        const VectorXd left = residuals(shape);
        const double removable = (decomposition.matrixU().transpose() * left).norm();
        return singular[3] > 1e-4 * singular[0]
            && (removable <= 1e-4 * left.norm() || removable <= 1e-9 * std::abs(height));
    }

    VectorXd y;
    VectorXd lnX;  ///< below everything for x = 0
    Values places; ///< the distinct ln x, ascending, without x = 0
    double middle = 0.0;
};

} // namespace

class TestLeastMinimum : public QObject {
    Q_OBJECT

private slots:
    void agreesWithADenseSearch();
};

/// Shows: CUR-5
void TestLeastMinimum::agreesWithADenseSearch()
{
    Random random(2);
    int determined = 0;
    QStringList findings;

    for (int i = 0; i < curves; ++i) {
        const Calibration calibration = randomCalibration(random);
        const auto [lowest, highest] =
            std::minmax_element(calibration.y.begin(), calibration.y.end());
        const double rounding = std::pow(1e-9 * (*highest - *lowest), 2);

        const Least least = Reference(calibration).least();
        const Fit fit = fitLogistic(calibration.x, calibration.y);

        determined += least.determined ? 1 : 0;
        if (least.determined && !fit.converged)
            findings << QString("curve %1: missed").arg(i);
        if (fit.converged && fit.residualSum > least.sum * (1.0 + 1e-6) + rounding)
            findings
                << QString("curve %1: %2 instead of %3").arg(i).arg(fit.residualSum).arg(least.sum);
    }

    QVERIFY2(findings.isEmpty(), qPrintable(findings.join('\n')));
    QVERIFY2(determined > curves * 6 / 10, qPrintable(QString::number(determined)));
}

QTEST_GUILESS_MAIN(TestLeastMinimum)
#include "tst_leastminimum.moc"
