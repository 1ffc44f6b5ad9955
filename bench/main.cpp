// Micro benchmarks of the filter's stages. The report goes to standard error, because standard
// output is where the filter writes; --benchmark_out=FILE keeps it.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <iostream>

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  const int null_device = open("/dev/null", O_RDWR);
  dup2(null_device, STDIN_FILENO);
  dup2(null_device, STDOUT_FILENO);
  benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
  reporter.SetOutputStream(&std::cerr);
  reporter.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
