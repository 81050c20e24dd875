# Draws the ratios of a run of the benchmarks as bars:
#
#   gnuplot -e "data='results.dat'; picture='results.svg'" bench/ratios.gp
#
# report/ChartData.h says what the lines of `data` hold.

LONGEST = 3.0 # longer bars are cut off there
PIXELS = 20   # for each line

set datafile separator "\t"
stats data using 0 nooutput
lines = STATS_records
height = lines + 3.0 # with the title above and a margin below

lengthOf(ratio) = ratio < LONGEST ? ratio : LONGEST
colourOf(verdict) = verdict eq "met" ? 0x2a9d5c : verdict eq "missed" ? 0xd9822b : 0x8296aa
furthest(ratio, goal) = lengthOf(goal > ratio ? goal : ratio) # a comparison with NaN is false
isHeading(verdict) = verdict eq "heading"

set terminal svg size 960, int(height * PIXELS) font "sans-serif,12" background "#ffffff" noenhanced
set output picture
set lmargin at screen 0.49
set rmargin at screen 0.93
set tmargin at screen 1 - 2.4 / height
set bmargin at screen 0.6 / height
set label "Time of the library : time of the other side. Short bars are good." \
    at screen 0.01, screen 1 - 0.8 / height
set label "Stroke: goal. Dotted line: both sides equally fast." \
    at screen 0.01, screen 1 - 1.6 / height
set arrow from 1, graph 0 to 1, graph 1 nohead dashtype 3 linecolor "#555555"
set xrange [0:LONGEST]
set yrange [lines - 0.5:-0.5]
unset border
unset key
unset xtics
set ytics scale 0
set style fill solid noborder

# The bars with their names, the headings, the ratios as numbers, and the goals.
plot data using (0):0:(0):(lengthOf($2)):($0 - 0.3):($0 + 0.3):(colourOf(strcol(4))) \
         with boxxyerror linecolor rgb variable, \
     data using (0):0:ytic(isHeading(strcol(4)) ? "" : strcol(1)) with points pointtype -1, \
     data using (0):0:(isHeading(strcol(4)) ? strcol(1) : "") with labels left offset 0.5, 0, \
     data using (furthest($2, $3)):0:(sprintf("%.2f", $2)) with labels left offset 0.5, 0, \
     data using 3:($0 - 0.4):(0):(0.8) with vectors nohead linecolor "#000000"
