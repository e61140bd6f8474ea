# Sourced by every simulated tool, as /run/sandbox/tools/../lib/common.sh also by the suites'
# stand-ins. The tools live in a run's work folder next to its `config`, the options' settings,
# and /run/sandbox/tools links to them. A command inside changes the settings in
# /run/sandbox/settings: the programs that start the tools seldom pass an environment on.
SANDBOX_WORK=$(dirname "$(readlink -f /run/sandbox/tools)")
# shellcheck source=/dev/null
. "$SANDBOX_WORK/config"
# shellcheck source=/dev/null
[ -r /run/sandbox/settings ] && . /run/sandbox/settings

# Appends one line per call to the run's log: the tool, each argument in brackets, then each
# named variable in braces ({NAME=value}, or {NAME} when it is unset). Line feeds inside
# values are written as \n so that one call stays one line.
#   sandbox_log TOOL "VAR…" ARG…
sandbox_log() {
    local line=$1 names=$2 arg name
    shift 2
    for arg in "$@"; do
        line+=" [${arg//$'\n'/\\n}]"
    done
    for name in $names; do
        if [ -n "${!name+set}" ]; then
            arg=${!name}
            line+=" {$name=${arg//$'\n'/\\n}}"
        else
            line+=" {$name}"
        fi
    done
    printf '%s\n' "$line" >>"$SANDBOX_LOG"
    # On request, the whole environment the tool was started with, after its call's line.
    if [ -n "${SANDBOX_ENV_LOG-}" ]; then
        { printf '%s\n' "$line"; tr '\0' '\n' </proc/$$/environ; } >>"$SANDBOX_ENV_LOG"
    fi
}

# The descriptors the calling shell has open, "fd:target" each: those it was started with, but for
# bash's own copy of its script (255) and the pipe of the command substitution around this call.
sandbox_descriptors() {
    local fd
    for fd in /proc/$$/fd/*; do
        printf '%s:%s ' "${fd##*/}" "$(readlink "$fd")"
    done
}

# The tool's failure mode: SANDBOX_MODE_<TOOL> (upper case, _ for -) of the settings, else ok.
sandbox_mode() {
    local name
    name=SANDBOX_MODE_$(printf '%s' "$1" | tr 'a-z-' 'A-Z_')
    printf '%s' "${!name:-ok}"
}

# Acts on the modes every tool knows; returns for ok and for modes the tool handles itself.
sandbox_apply_mode() {
    case $1 in
    exit:*)
        exit "${1#exit:}"
        ;;
    crash)
        # The host writes core files into the working folder; a rehearsal wants none.
        ulimit -c 0
        kill -SEGV $$
        ;;
    hang)
        exec sleep infinity
        ;;
    flood | flood:*)
        # MB megabytes on standard output and an eighth of that on standard error, at full speed;
        # then the tool does its work as usual.
        local megabytes=${1#flood} line="${0##*/}: flooding its output channels"
        megabytes=${megabytes#:}
        yes "$line" | head -c "$((${megabytes:-32} * 1048576))"
        yes "$line" | head -c "$((${megabytes:-32} * 131072))" >&2
        ;;
    esac
}
