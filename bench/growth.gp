# The plot of growth, from the data files in the working directory.
set terminal svg size 1200,420 font "sans,13" background "#ffffff"
set output "growth.svg"
set multiplot layout 1,3
set logscale xy
set format x "10^{%L}"
set xlabel "drives"
set grid
set key left top
set key samplen 2
set yrange [10:20000]
set title "Reading a report of drives: ns per line"
plot "reader.dat" with linespoints lw 2 title "reader", \
     "items.dat" with linespoints lw 2 title "lines and items alone", \
     "lines.dat" with linespoints lw 2 title "lines alone"
set title "Conversion: ns per item"
plot "libxml2.dat" with linespoints lw 2 title "xmlTextWriter", \
     "conversion.dat" with linespoints lw 2 title "conversion library"
set yrange [1:100000]
set title "Whole call: ms"
plot "call.dat" using 1:2 with linespoints lw 2 title "call", \
     "call.dat" using 1:3 with linespoints lw 2 title "bare commands"
unset multiplot
