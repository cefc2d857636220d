# Runs as root in a Debian that has nothing but apt, with what PackagesTest.py puts into /given; tells what served.
set -e
export DEBIAN_FRONTEND=noninteractive
cd /given

install() { apt-get install --yes --quiet=2 --no-install-recommends "$@" >/dev/null; }

# wanted NAME COMMAND...: the command prints the record of the job.
wanted() {
    name=$1
    shift
    output=$("$@")
    case $output in
        *'"copies":5'*) echo "served: $name" ;;
        *)
            echo "$name does not know the job: $output"
            exit 1
            ;;
    esac
}

echo 'begun: packages'

# First with what the packages bring along, so that a dependency that they do not name is missed.
install ./packages/jobparser_*.deb ./packages/libjobparser1_*.deb
wanted tool jobparser info job.prn
jobparser meta job.prn -o job.meta.json
wanted metadata jobparser meta job.prn --from-meta job.meta.json

# A small root leaves manual pages away, so what is packed is looked at.
dpkg-deb --fsys-tarfile ./packages/jobparser_*.deb | tar -xOf - ./usr/share/man/man1/jobparser.1.gz | gzip -dc |
    grep -q '^\.Sh EXIT STATUS$'
echo 'served: manual'
bash -c '. /usr/share/bash-completion/completions/jobparser
    COMP_WORDS=(jobparser rewr) COMP_CWORD=1; _jobparser; [ "${COMPREPLY[*]}" = rewrite ]'
echo 'served: completion'

install ./packages/python3-jobparser_*.deb
wanted python python3 -c 'import jobparser; print("\"copies\":%d" % jobparser.parse("job.prn").info.copies)'

install ./packages/libjobparser-dev_*.deb cmake make g++ pkg-config
flags=$(pkg-config --cflags --libs jobparser)
cmake -S consumers/cpp -B build >/dev/null
cmake --build build >/dev/null
wanted cmake build/consumer job.prn
g++ -std=c++20 consumers/cpp/consumer.cpp -o cpp-by-pkg-config $flags
wanted cpp-pkg-config ./cpp-by-pkg-config job.prn
cc -std=c99 consumers/c/consumer.c -o by-pkg-config $flags
wanted pkg-config ./by-pkg-config job.prn
cc -std=c99 consumers/c/safe.c -o safe $flags
wanted safe ./safe job.prn out.prn
cmp job.prn out.prn

for worker in ./packages/jobparser-worker_*.deb; do
    [ -e "$worker" ] || continue
    install "$worker"
    printf '%%!PS\n/Courier findfont 20 scalefont setfont 100 100 moveto (text) show showpage\n' >page.ps
    answer=$(printf '{"command":"parse","pdl":2,"jobPath":"/given/page.ps","grayscaleTolerance":0}\n' | ZemJobProcessor)
    case $answer in
        *'"monoCount":1,'*) echo "served: worker" ;;
        *)
            echo "The worker does not count a page: $answer"
            exit 1
            ;;
    esac
done

# Nothing of the packages stays, not even what was compiled.
apt-get purge --yes --quiet=2 jobparser libjobparser1 libjobparser-dev python3-jobparser jobparser-worker >/dev/null 2>&1 ||
    apt-get purge --yes --quiet=2 jobparser libjobparser1 libjobparser-dev python3-jobparser >/dev/null
left=$(find / -xdev \( -path /given -o -path /proc -o -path /sys -o -path /var/lib/apt -o -path /tmp \) -prune -o \
    -iname '*jobparser*' -not -path '/var/log/*' -print)
[ -z "$left" ] || {
    echo "Left behind: $left"
    exit 1
}
echo 'served: removal'
