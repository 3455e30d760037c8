#include <algorithm>
#include <cmath>
#include <limits>

#include "gateway/GatewayTest.h"
#include "gateway/Messages.h"

// Every message of the gateway, and which one a call with several mistakes gets.

namespace {

using namespace messages;

class MessagesTest : public GatewayTest {
 protected:
  /// A report of a failed condition, with any line number.
  static std::string report(const std::string& file, const std::string& condition,
                            const std::string& actual) {
    std::string head = "ERROR: assertion failure in " + file + " at line ";
    const std::size_t end = actual.find('\n');
    if (actual.compare(0, head.size(), head) != 0 || end == std::string::npos) return head;
    if (std::stoi(actual.substr(head.size())) < 2) return head;
    return actual.substr(0, end) + "\n       condition failed: (" + condition + ").\n\n";
  }

  /// Expects a call with a table of this many rows to fail, since no rule has that order.
  void expectOutOfRange(const Arguments& arguments, std::size_t rows) {
    const host::Outcome outcome = call(arguments);
    const std::string error = outcome.error.value_or("");
    EXPECT_EQ(error, report("src/FastNearfield/RectangularPistonCuda", "N <= 512 && N>0", error))
        << rows;
    EXPECT_NE(outcome.standardOutput.find("using " + std::to_string(rows) + " abscissas.\n"),
              std::string::npos);
  }

  static std::vector<mxArray> everyOtherClass() {
    std::vector<mxArray> values;
    for (const char* name :
         {"single", "int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64",
          "logical", "char", "cell", "struct", "function_handle", "object"})
      values.push_back(host::ofClass(name, 3, 1));
    values.push_back(host::sparseMatrix(3, 1, {1, 2, 3}));
    values.push_back(host::complexMatrix(3, 1, {1, 2, 3}, {0, 0, 0}));
    return values;
  }

  static mxArray inShape(const std::string& characters, const std::vector<std::size_t>& dims) {
    mxArray array = host::text(characters);
    array.dims = dims;
    return array;
  }

  /// A value that an argument cannot have.
  struct Wrong {
    mxArray Arguments::*argument;
    mxArray value;
    std::string message;
  };

  void expectError(const Wrong& wrong) {
    Arguments arguments;
    arguments.*wrong.argument = wrong.value;
    EXPECT_EQ(errorOf(arguments), wrong.message)
        << wrong.value.className << " " << testing::PrintToString(wrong.value.dims) << " "
        << std::string(wrong.value.bytes.begin(), wrong.value.bytes.end()).substr(0, 20);
  }
};

TEST_F(MessagesTest, OtherTextsAndInfoWithAnOutputAreNoQueries) {
  for (const char* other : {"inf", "infos", "Info", "", "xinfo"})
    EXPECT_EQ(module.call(0, {host::text(other)}).error, argumentCount) << other;
  EXPECT_EQ(module.call(0, {host::scalar(1)}).error, argumentCount);
  EXPECT_EQ(module.call(0, {}).error, argumentCount);
  EXPECT_EQ(module.call(0, {host::text("info"), host::text("info")}).error, argumentCount);
  EXPECT_EQ(module.call(1, {host::text("info")}).error, argumentCount);
}

TEST_F(MessagesTest, ThereMustBeFiveToSevenArgumentsAndOneOutput) {
  for (const std::size_t count : {4u, 5u, 6u, 7u, 8u})
    EXPECT_EQ(errorOf({}, count), count == 4 || count == 8 ? argumentCount : "") << count;
  for (const int outputs : {0, 2})
    EXPECT_EQ(module.call(outputs, Arguments{}.first(5)).error, outputCount) << outputs;
}

TEST_F(MessagesTest, WrongShapesAndTextsHaveTheirMessages) {
  for (const Wrong& wrong : std::vector<Wrong>{
           {&Arguments::points, host::ofClass("sparse", 3, 1), pointsType},
           {&Arguments::points, host::matrix(2, 2, {1, 2, 3, 4}), rowCount},
           {&Arguments::points, host::matrix(4, 1, {1, 2, 3, 4}), rowCount},
           {&Arguments::points, host::matrix(0, 0, {}), rowCount},
           {&Arguments::points, host::matrix(3, 0, {}), noPoints},
           {&Arguments::nabscissas, host::matrix(1, 3, {1, 2, 3}), abscissas},
           {&Arguments::nabscissas, host::matrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}), abscissas},
           {&Arguments::nabscissas, host::matrix(0, 0, {}), abscissas},
           {&Arguments::nabscissas, host::sparseMatrix(0, 0, {}), abscissas},
           {&Arguments::nabscissas, host::matrix(2, 1, {1, 2}), abscissas},
           {&Arguments::mode, host::text(std::string("\0cuda", 5)), modeValue},
           {&Arguments::mode, inShape("cuadaa", {2, 3}), modeValue},
           {&Arguments::mode, host::text(std::string(1000000, 'x')), modeValue},
       })
    expectError(wrong);
  mxArray tooMany = host::matrix(3, 1, {0, 0, 1});  // which claims more points than it has
  for (const std::size_t points : {std::size_t{1} << 31, (std::size_t{1} << 32) + 1,
                                   (std::size_t{1} << 33) - 1, std::size_t{1} << 60}) {
    tooMany.dims[1] = points;
    expectError({&Arguments::points, tooMany, tooManyPoints});
  }
  for (const char* other : {"CUDA", "cud", "cudad", "cudadpx", "gpu", "", "cpu ", "cpus"})
    expectError({&Arguments::mode, host::text(other), modeValue});
  for (const char* cpu : {"cpu", "cpusp", "cpudp"})
    expectError({&Arguments::mode, host::text(cpu), cpuMode});
}

TEST_F(MessagesTest, OtherClassesHaveTheirMessages) {
  const auto expected = pressures({});
  for (const mxArray& value : everyOtherClass()) {
    expectError({&Arguments::points, value, pointsType});
    if (value.className != "char") expectError({&Arguments::mode, value, modeType});
    Arguments arguments;
    arguments.ignored = value;
    EXPECT_EQ(pressures(arguments), expected) << value.className;
    if (value.isComplex) continue;  // its real part is the table
    mxArray table = value;
    table.dims = {1, 2};
    expectError({&Arguments::nabscissas, table, abscissas});
  }
  for (const Wrong& number :
       {Wrong{&Arguments::l, {}, messages::l}, Wrong{&Arguments::s, {}, messages::s},
        Wrong{&Arguments::k, {}, messages::k}, Wrong{&Arguments::nabscissas, {}, abscissas}}) {
    expectError(number);  // an empty matrix
    expectError({number.argument, host::sparseMatrix(0, 0, {}), number.message});
    for (const char* name : {"cell", "struct", "function_handle", "object"})
      expectError({number.argument, host::ofClass(name, 1, 1), number.message});
    if (number.argument != &Arguments::nabscissas)
      expectError({number.argument, host::ofClass("int8", 1, 1), ""});
  }
}

TEST_F(MessagesTest, PagesOfPointsCountAsColumns) {
  Arguments arguments;
  arguments.points.dims = {3, 2, 2};
  arguments.points.re = {0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4};
  EXPECT_EQ(pressures(arguments).size(), 4u);
}

TEST_F(MessagesTest, ASparseScalarIsANumber) {
  Arguments full;
  full.nabscissas = host::scalar(7);
  const auto expected = pressures(full);
  for (mxArray Arguments::*const argument :
       {&Arguments::l, &Arguments::s, &Arguments::k, &Arguments::nabscissas}) {
    Arguments arguments = full;
    (arguments.*argument) = host::sparseMatrix(1, 1, (full.*argument).re);
    EXPECT_EQ(pressures(arguments), expected);
  }
}

TEST_F(MessagesTest, ASparseScalarThatHoldsNothingIsZero) {
  for (mxArray Arguments::*const argument : {&Arguments::l, &Arguments::s, &Arguments::k}) {
    Arguments full, sparse;
    (full.*argument) = host::scalar(0);
    (sparse.*argument) = host::sparseMatrix(1, 1, {});
    EXPECT_EQ(call(sparse).printed, call(full).printed);
    EXPECT_EQ(pressures(sparse), pressures(full));
  }
  Arguments arguments;
  arguments.nabscissas = host::sparseMatrix(1, 1, {});
  const std::string error = errorOf(arguments);
  EXPECT_EQ(error, report("src/FastNearfield/IntegratorCuda", "order>0", error));
}

TEST_F(MessagesTest, TextsAreReadColumnByColumnUpToAZeroWhateverTheirShape) {
  const auto expected = pressures({});
  Arguments arguments;
  for (const mxArray& cuda :
       {inShape("cuda", {4, 1}), inShape("cuda", {2, 2}), inShape("cuda", {1, 2, 2}),
        host::text(std::string("cuda\0x", 6)), inShape(std::string("cudadp\0x", 8), {2, 4})}) {
    arguments.mode = cuda;
    EXPECT_EQ(pressures(arguments), expected);
  }
  arguments.mode = inShape("cpudp", {5, 1});
  EXPECT_EQ(errorOf(arguments), cpuMode);

  const std::string info = module.call(0, {host::text("info")}).printed;
  EXPECT_EQ(std::count(info.begin(), info.end(), '\n'), 4);
  for (const mxArray& query :
       {inShape("info", {4, 1}), inShape("info", {2, 2}), host::text(std::string("info\0\0", 6))}) {
    const host::Outcome outcome = module.call(0, {query});
    EXPECT_FALSE(outcome.error);
    EXPECT_TRUE(outcome.results.empty());
    EXPECT_EQ(outcome.printed, info);
  }
}

TEST_F(MessagesTest, OrdersOutOfRangeAreReported) {
  Arguments arguments;
  const double inf = std::numeric_limits<double>::infinity();
  for (const double order :
       {0.0, -3.0, 0.9, -0.5, -1e9, -1e300, -inf, inf, std::nan(""), 2147483648.0}) {
    arguments.nabscissas = host::scalar(order);
    const std::string error = errorOf(arguments);
    EXPECT_EQ(error, report("src/FastNearfield/IntegratorCuda", "order>0", error)) << order;
  }
  for (const double order : {513.0, 1e9, 2147483647.0}) {
    arguments.nabscissas = host::scalar(order);
    const std::string error = errorOf(arguments);
    EXPECT_EQ(error, report("src/FastNearfield/RectangularPistonCuda.dp", "N <= 512 && N>0", error))
        << order;
  }
}

TEST_F(MessagesTest, TablesOutOfRangeAreReported) {
  Arguments arguments;
  for (const std::size_t rows : {0u, 513u, 600u}) {
    arguments.nabscissas = host::matrix(rows, 2, std::vector<double>(2 * rows, 0.5));
    expectOutOfRange(arguments, rows);
  }
}

TEST_F(MessagesTest, MoreRowsThanAnIntCountsAreOutOfRangeToo) {
  // The arrays claim more rows than they hold. Converted to int, the sizes would be -2147483648, 1
  // and 5.
  Arguments arguments;
  arguments.nabscissas = host::matrix(256, 2, std::vector<double>(512, 0.5));
  for (const std::size_t rows :
       {std::size_t{1} << 31, (std::size_t{1} << 32) + 1, (std::size_t{1} << 32) + 5}) {
    arguments.nabscissas.dims[0] = rows;
    expectOutOfRange(arguments, rows);
  }
}

TEST_F(MessagesTest, MessagesWinInTheOrderOfTheChecks) {
  // From the last check to the first: each mistake is added to the previous ones, and its message
  // replaces theirs.
  Arguments arguments;
  arguments.nabscissas = host::scalar(513);
  arguments.mode = host::text("cpu");
  EXPECT_EQ(errorOf(arguments), cpuMode);
  arguments.mode = host::text("gpu");
  EXPECT_EQ(errorOf(arguments), modeValue);
  arguments.mode = host::scalar(1);
  EXPECT_EQ(errorOf(arguments), modeType);
  arguments.points = host::matrix(3, 0, {});
  EXPECT_EQ(errorOf(arguments), noPoints);
  arguments.points = host::matrix(2, 0, {});
  EXPECT_EQ(errorOf(arguments), rowCount);
  arguments.k = host::matrix(0, 0, {});
  EXPECT_EQ(errorOf(arguments), messages::k);
  arguments.s = host::matrix(0, 0, {});
  EXPECT_EQ(errorOf(arguments), messages::s);
  arguments.l = host::matrix(0, 0, {});
  EXPECT_EQ(errorOf(arguments), messages::l);
  arguments.nabscissas = host::matrix(1, 3, {1, 2, 3});
  EXPECT_EQ(errorOf(arguments), abscissas);
  arguments.points = host::text("ab");
  EXPECT_EQ(errorOf(arguments), pointsType);
  EXPECT_EQ(module.call(2, arguments.first(7)).error, outputCount);
  EXPECT_EQ(module.call(2, arguments.first(8)).error, argumentCount);
}

}  // namespace
