# What the project needs of Debian 12, by purpose. Sourced by run, test and .ci/run.
build_packages=(build-essential g++ cmake ninja-build ccache pkg-config libfmt-dev libcli11-dev libxlsxwriter-dev zlib1g-dev
    qt6-base-dev libqt6svg6-dev libgl-dev tzdata)
run_packages=(qt6-qpa-plugins fonts-dejavu-core libqt6svg6)
test_packages=(libgtest-dev libgmock-dev libgsf-1-dev libgsf-bin p7zip-full poppler-utils python3 python3-olefile python3-openpyxl gettext)
ci_packages=(clang-14 libclang-rt-14-dev clang-format-14)
# Cross compiler, linker, headers to build with, and Wine (64 bits only, so that no foreign architecture is needed).
windows_packages=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix lld googletest libfmt-dev libcli11-dev gettext wine64)
bench_packages=(libbenchmark-dev libsqlite3-dev libgsf-1-dev libqcustomplot-dev)
