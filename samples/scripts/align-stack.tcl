# Aligns a stack and writes the result.
#
#   orvel -b align-stack.tcl INPUT OUTPUT ?METHOD?
#
# INPUT is a volume or a folder of slices; the name of OUTPUT says the format. METHOD is the name of an alignment
# method, "OptimizeAlignMethod" (least-squares) unless another one is asked for.
if {[llength $argv] < 2} {
  puts stderr "usage: orvel -b align-stack.tcl INPUT OUTPUT ?METHOD?"
  quit 2
}
lassign $argv input output method
if {$method eq ""} { set method OptimizeAlignMethod }

set stack [load $input]
create ZxAlignSlices align
align data connect $stack
align fire

# Methods are the editor's; without a display it is open all the same, unseen.
align edit
align setAlignMode $method
align alignAll

align save                    ;# stores the transforms in the parameters of the stack
align resample
set aligned [align result]
$aligned save $output
puts "$input: aligned with $method, quality of the middle pair [align getQuality], written to $output"
