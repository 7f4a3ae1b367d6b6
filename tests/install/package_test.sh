#!/usr/bin/env bash
# The Debian package from `cpack -G DEB`: its fields and runtime dependencies, its files, and
# autocli run from it, unpacked into a throwaway root.
# Usage: package_test.sh BUILD_DIR
source "$(dirname "$0")/lib.sh"
require cpack dpkg-deb dpkg-shlibdeps

(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/package" \
    >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log" >&2; exit 1; }
version=$("$build/bin/autocli" --version | cut -d' ' -f2)
deb=$work/package/autocli_${version}_$(dpkg --print-architecture).deb
[[ -f $deb ]] || { fail "no $(basename "$deb") in: $(ls "$work/package")"; finish; }

expect_equal "package name" autocli "$(dpkg-deb -f "$deb" Package)"
expect_equal "package version" "$version" "$(dpkg-deb -f "$deb" Version)"
# Computed from the binaries: the C library for every one of them, and the C++ runtime for
# hostsim, which loads it (autocli carries its own).
depends=$(dpkg-deb -f "$deb" Depends)
for dependency in libc6 libstdc++6; do
    [[ $depends == *"$dependency ("* ]] || fail "Depends lacks $dependency: $depends"
done
# The libraries the live host's module opens when it first needs them, which no binary names.
for dependency in libpci3 pci.ids libnftables1; do
    [[ ", $depends," == *", $dependency,"* ]] || fail "Depends lacks $dependency: $depends"
done
# The package's own libraries are no dependency of it.
[[ $depends != *autocli* && $depends != *cpptools* && $depends != *kelmctl* ]] ||
    fail "Depends names the package's own libraries: $depends"
expect_equal "package files" "$(
    cat <<'END'
./usr/bin/autocli -> ../lib/autocli/bin/autocli
./usr/bin/hostsim -> ../lib/autocli/bin/hostsim
./usr/lib/autocli/bin/autocli
./usr/lib/autocli/bin/hostsim
./usr/lib/autocli/bin/libcpptools.so
./usr/lib/autocli/bin/libkelmctl.so
./usr/lib/autocli/bin/liblinuxhost.so
./usr/lib/autocli/plugins/libnetwork.so
./usr/share/bash-completion/completions/autocli
./usr/share/man/man1/autocli.1.gz
./usr/share/man/man7/autocli-network.7.gz
./usr/share/zsh/vendor-completions/_autocli
END
)" "$(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $6, $7, $8}' | sed 's/ *$//' | sort)"

dpkg -x "$deb" "$work/root"
AUTOCLI=$work/root/usr/bin/autocli
expect_equal "nic list from the package" "$("$build/bin/autocli" network nic list)" \
    "$("$AUTOCLI" network nic list)"
expect_equal "a completion from the package" "$(listed_names nic list)" \
    "$("$AUTOCLI" __complete network nic down --nic-name)"
(
    PATH=$work/root/usr/bin:$PATH
    source "$work/root/usr/share/bash-completion/completions/autocli"
    expect_equal "bash completion from the package" \
        "$(listed_names vswitch standard list | paste -sd' ')" \
        "$(bash_complete autocli network vswitch standard remove -v '')"
    exit "$failures"
) || failures=$((failures + 1))

finish
