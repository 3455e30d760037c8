#!/usr/bin/env bash
# sudo.sh <octave-cli> <pre_install.m> <setup>
#
# Checks that the Octave package uses sudo only if it needs no password and the user has agreed, by answering
# the package's question or by setting a preference.
set -euo pipefail
octave=$(command -v "$1") pre_install=$2 setup=$3

as_user=()
if ((EUID == 0)); then
  command -v setpriv >/dev/null || { echo "SKIPPED: needs setpriv, as root"; exit 77; }
  as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
command -v script >/dev/null || { echo "SKIPPED: needs script"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"
chmod 777 "$work"
cp "$pre_install" "$setup" "$work"
ln -s "$(command -v bash)" "$(type -P env)" "$(type -P true)" "$work/bin"
cat >"$work/bin/sudo" <<'END'
#!/bin/sh
echo "sudo $*" >>"$HOME/log"
if [ "$1" = -n ]; then shift; fi
exec "$@"
END
printf '#!/bin/sh\n' >"$work/bin/apt-get"
chmod +x "$work"/bin/{sudo,apt-get}

cat >"$work/install.sh" <<END
cd '$work' && exec env HOME='$work/home' '$octave' --no-history --norc --quiet --eval "
  setenv ('PATH', '$work/bin');
  if (exist ('choice.m'))
    source ('choice.m');
  end
  pre_install (struct ('name', 'pistonfield', 'version', '1'));"
END
at_terminal() { # <answer>
  printf '%s\n' "$1" | script -qec "bash $work/install.sh" /dev/null
}
without_terminal() { bash "$work/install.sh" </dev/null; }

tries() { # installs|refuses <choice> <command>
  echo "$2" >"$work/choice.m"
  rm -rf "${work:?}/home"
  mkdir -m 777 "$work/home"
  local got=refuses
  if "${as_user[@]}" bash -c "$(declare -f at_terminal without_terminal); work='$work'; $3" >"$work/said" 2>&1; then
    got=installs
  fi
  local log=$work/home/log became_root=refuses
  if [[ -e $log ]]; then became_root=installs; fi
  if [[ $got != "$1" || $became_root != "$1" ]] ||
    ! grep -qF "g++ cmake make octave-dev" "$([[ $1 == installs ]] && echo "$log" || echo "$work/said")"; then
    echo "$3, '$2': it $got. sudo was run as:"
    cat "$log" "$work/said" || true
    exit 1
  fi
}
never="setpref ('pistonfield', 'use_sudo', false);"
always="setpref ('pistonfield', 'use_sudo', true);"
tries refuses "" without_terminal
tries installs "$always" without_terminal
tries refuses "$never" without_terminal
tries refuses "" "at_terminal n"
grep -qF "(y/n)" "$work/said"
tries installs "" "at_terminal y"
tries refuses "$never" "at_terminal y"
tries installs "$always" "at_terminal n"
