# Aligns a stack by landmarks that someone has placed, and takes a picture of the editor.
#
#   orvel -b align-landmarks.tcl INPUT LANDMARKS PICTURE OUTPUT
#
# LANDMARKS is a table "slice,index,x,y" with the pixel of every landmark on every slice; the name of PICTURE says
# its format (.png, .jpg), and
# so does that of OUTPUT, the aligned stack.
if {[llength $argv] != 4} {
  puts stderr "usage: orvel -b align-landmarks.tcl INPUT LANDMARKS PICTURE OUTPUT"
  quit 2
}
lassign $argv input landmarks picture output

set stack [load $input]
create ZxAlignSlices align
align data connect $stack
align fire
align setLandmarks $landmarks

align edit
align setAlignMode LandmarkAlignMethod
align alignAll
puts "[align getLandmarkCount] landmarks on each slice; quality of the middle pair [align getQuality]"

align showCoronalView 1       ;# a cut along z shows whether the slices fit
align snapshot $picture

align resample
[align result] save $output
