# The picture of docs/performance.md: gnuplot -e "ratios='…'; curves='…'; picture='…'" performance.gp
# Fields stand between tabs. Ratios, one a line: what, median, least, most, target (or nothing). Curves, two blank lines
# between them: title, unit, what counts on the axis; then the points.
set encoding utf8
set datafile separator tab
stats ratios using 2 nooutput
rows = int(STATS_records)
stats curves using 1 nooutput
panels = int(STATS_blocks)
columns = 3

# Pixels: the ratios' rows, from one panel to the next, and a panel.
width = 960; top = 80; row = 24; chart = top + rows * row
growth = chart + 100; across = 310; down = 220; wide = 240; high = 130
height = growth + (panels + columns - 1) / columns * down
x(pixels) = real(pixels) / width
y(pixels) = 1 - real(pixels) / height

blue = "#3b76b5"; red = "#cc3333"; dark = "#333333"; pale = "#dddddd"
set terminal svg size width, height dynamic font "sans-serif,12" background "#ffffff"
set output picture
set multiplot
set border 3 linecolor rgb dark
set tics nomirror scale 0 textcolor rgb dark
set grid linetype 1 linecolor rgb pale
unset key

set label 1 "The agent against the parts under it" at screen x(24), screen y(26) font "sans-serif:Bold,15"
set label 2 "ratio of the times, agent to floor (square: median of the pairs, line: all of them, mark: target)" \
  at screen x(24), screen y(46)
set lmargin at screen x(520); set rmargin at screen x(930); set tmargin at screen y(top); set bmargin at screen y(chart)
set logscale x 2
set xrange [0.5:32]
set x2range [0.5:32]
set yrange [rows - 0.5:-0.5]
set xlabel "ratio"
set arrow 1 from 1, graph 0 to 1, graph 1 nohead linecolor rgb dark
plot ratios using 3:0:($4 - $3):(0):yticlabels(1) with vectors nohead linewidth 2 linecolor rgb blue, \
  "" using 2:0 with points pointtype 5 pointsize 0.7 linecolor rgb blue, \
  "" using 5:($0 - 0.4):(0):(0.8) with vectors nohead linewidth 2 linecolor rgb red
unset label 2; unset arrow 1; unset logscale x
set autoscale x

set label 1 "Growth (dashed: straight from the first point to the last)" at screen x(24), screen y(growth - 44)
set xrange [0:*]
set yrange [0:*]
set ytics autofreq
set tics font ",10"
do for [panel = 0:panels - 1] {
  left = 60 + panel % columns * across
  above = growth + panel / columns * down
  set lmargin at screen x(left); set rmargin at screen x(left + wide)
  set tmargin at screen y(above); set bmargin at screen y(above + high)
  stats curves index panel every ::0::0 using (name = strcol(1), unit = strcol(2), axis = strcol(3), 1) nooutput
  stats curves index panel every ::1 using 1 nooutput
  last = STATS_records - 1
  set label 2 name at graph 0, graph 1.1 font "sans-serif:Bold,12"
  set xlabel axis
  set ylabel unit offset 1
  plot curves index panel every last::1 using 1:2 with lines linecolor rgb dark dashtype 2, \
    "" index panel every ::1 using 1:2:xticlabels(1) with linespoints pointtype 5 pointsize 0.5 linewidth 2 linecolor rgb blue
  unset label 1
}
